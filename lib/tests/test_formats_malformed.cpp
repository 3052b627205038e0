// Readers fail safely: broken and mutated inputs give a response code and a
// message with the place, never a crash, and leave the task exactly as it was.
#include <cstdio>
#include <random>
#include <string>

#include "formats_util.hpp"

using namespace fmt_test;

namespace {

struct Broken {
  int format;
  const char *text;
  qrn_rescode code;
  const char *place;  // expected in the message
};

const Broken corpus[] = {
    {QRN_DATA_FORMAT_MPS, "", QRN_RES_ERR_READ_EOF, "<string>:1:1"},
    {QRN_DATA_FORMAT_MPS, "NAME x\nROWS\n N obj\nCOLUMNS\n", QRN_RES_ERR_READ_EOF, "<string>:5:1"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\nFOO\nENDATA\n", QRN_RES_ERR_READ_SECTION, "<string>:3:1"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\n L c1\nCOLUMNS\n x c2 1\nENDATA\n", QRN_RES_ERR_READ_NAME_UNKNOWN, "<string>:5:4"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\n L c1\n G c1\nENDATA\n", QRN_RES_ERR_READ_NAME_DUP, "<string>:4:4"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\n L c1\nCOLUMNS\n x c1 1e999\nENDATA\n", QRN_RES_ERR_READ_NUMBER, "<string>:5:7"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\n L c1\nCOLUMNS\n x c1 nan\nENDATA\n", QRN_RES_ERR_READ_NUMBER, "<string>:5:7"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\nCOLUMNS\n x obj 1\nBOUNDS\n SC BND x 4\nENDATA\n", QRN_RES_ERR_READ_UNSUPPORTED, "<string>:6:2"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\nCOLUMNS\n x obj 1\n y obj 1\n x obj 2\nENDATA\n", QRN_RES_ERR_READ_NAME_DUP, "<string>:6:2"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n N obj\nENDATA\nROWS\n", QRN_RES_ERR_READ_SECTION, "<string>:4:1"},
    {QRN_DATA_FORMAT_MPS, "ROWS\n X obj\nENDATA\n", QRN_RES_ERR_READ_SYNTAX, "<string>:2:2"},
    {QRN_DATA_FORMAT_LP, "", QRN_RES_ERR_READ_SECTION, "<string>:1:1"},
    {QRN_DATA_FORMAT_LP, "minimize\n obj: x + y\nsubject to\n c: x + y >=\n", QRN_RES_ERR_READ_EOF, "<string>:5:1"},
    {QRN_DATA_FORMAT_LP, "minimize\n obj: x + y\nsubject to\n c: x y >= 1\nend\n", QRN_RES_ERR_READ_SYNTAX, "<string>:4:7"},
    {QRN_DATA_FORMAT_LP, "minimize\n x\nsubject to\n c: x >= 1\n c: x <= 2\nend\n", QRN_RES_ERR_READ_NAME_DUP, "<string>:5:2"},
    {QRN_DATA_FORMAT_LP, "minimize\n x\nsubject to\n c: x >= 1e400\nend\n", QRN_RES_ERR_READ_NUMBER, "<string>:4:10"},
    {QRN_DATA_FORMAT_LP, "minimize\n x\nsubject to\n c: x >= 1\nend\nx\n", QRN_RES_ERR_READ_SECTION, "<string>:6:1"},
    {QRN_DATA_FORMAT_LP, "minimize\n x\nsemi-continuous\n x\nend\n", QRN_RES_ERR_READ_UNSUPPORTED, "<string>:3:1"},
    {QRN_DATA_FORMAT_OPF, "", QRN_RES_ERR_READ_VERSION, "<string>:1:1"},
    {QRN_DATA_FORMAT_OPF, "opf 2\n", QRN_RES_ERR_READ_VERSION, "<string>:1:5"},
    {QRN_DATA_FORMAT_OPF, "opf 1\nvariables 2\nvar 0 \"x\" continuous free\n", QRN_RES_ERR_READ_EOF, "<string>:4:1"},
    {QRN_DATA_FORMAT_OPF, "opf 1\nvariables 1\nvar 0 \"x continuous free\n", QRN_RES_ERR_READ_SYNTAX, "<string>:3:7"},
    {QRN_DATA_FORMAT_OPF, "opf 1\nvariables 1\nvar 0 \"x\" continuous free\nconstraints 0\nrow 0 0 1\nend\n", QRN_RES_ERR_READ_INDEX, "<string>:5:5"},
    {QRN_DATA_FORMAT_OPF, "opf 1\nvariables 0\nconstraints 0\nbarvar 3\nend\n", QRN_RES_ERR_READ_SECTION, "<string>:4:1"},
    {QRN_DATA_FORMAT_PTF, "ptf 1\nname \"\" \"\"\nsense min constant 0\ndims 0 99999999 0\n", QRN_RES_ERR_READ_INDEX, "<string>:4:8"},
    {QRN_DATA_FORMAT_PTF, "ptf 1\nname \"\" \"\"\nsense min constant 0\ndims 0 1 0\nc 1 0 1\nbc\nbx ra 0\n", QRN_RES_ERR_READ_EOF, "<string>:8:1"},
    {QRN_DATA_FORMAT_JSON_TASK, "", QRN_RES_ERR_READ_EOF, "<string>:1:1"},
    {QRN_DATA_FORMAT_JSON_TASK, "{\"format\": \"jtask\",\n \"version\": 1,\n \"task\": [}", QRN_RES_ERR_READ_SYNTAX, "<string>:3:11"},
    {QRN_DATA_FORMAT_JSON_TASK, "{\"format\": \"jtask\", \"version\": 2, \"task\": {}}", QRN_RES_ERR_READ_VERSION, "/version"},
    {QRN_DATA_FORMAT_JSON_TASK, "{\"format\": \"jtask\", \"version\": 1, \"task\": {\"barvars\": [], \"variables\": {\"count\": 0, \"bk\": [], \"bl\": [], \"bu\": []}, \"constraints\": {\"count\": 0, \"bk\": [], \"bl\": [], \"bu\": []}, \"objective\": {\"sense\": \"minimize\"}}}", QRN_RES_ERR_READ_SYNTAX, "/task/barvars"},
    {QRN_DATA_FORMAT_CBF, "VER\n3\nVAR\n2 1\nF 3\n", QRN_RES_ERR_READ_INDEX, "<string>:5:3"},
    {QRN_DATA_FORMAT_CBF, "VER\n3\nPSDVAR\n1\n2\nVAR\n0 0\nCHANGE\n", QRN_RES_ERR_READ_UNSUPPORTED, "<string>:8:1"},
    {QRN_DATA_FORMAT_CBF, "VER\n9\n", QRN_RES_ERR_READ_VERSION, "<string>:2:1"},
    {QRN_DATA_FORMAT_CBF, "VER\n3\nVAR\n3 1\nSVECPSD 3\n", QRN_RES_ERR_READ_UNSUPPORTED, "<string>:5:1"},
    {QRN_DATA_FORMAT_CBF, "VER\n3\nVAR\n1 1\nEXP 1\n", QRN_RES_ERR_READ_INDEX, "<string>:5:1"},
    {QRN_DATA_FORMAT_TEXT, "qrntext 1\ntask \"\"\n", QRN_RES_ERR_READ_EOF, "<string>:3:1"},
};

// Each allowed failure of a reader: a read code, or the code of data the task refuses.
bool reader_code(qrn_rescode r) {
  return (r >= QRN_RES_ERR_READ_SYNTAX && r <= QRN_RES_ERR_GZIP) || (r >= 1100 && r <= 1403) || r == QRN_RES_ERR_VALUE_NAN ||
         r == QRN_RES_ERR_PARAM_NAME || r == QRN_RES_ERR_PARAM_VALUE || r == QRN_RES_ERR_PARAM_TYPE;
}

}  // namespace

TEST(formats_broken_corpus) {
  Fixture f;
  fill_rich(f.task);
  const Snapshot before = snapshot(f.task);
  for (const Broken &b : corpus) {
    qrn_rescode r = QRN_readdatastring(f.task, b.text, b.format);
    std::string msg = last_message(f.task);
    CHECK_EQ(r, b.code);
    CHECK(msg.find(b.place) != std::string::npos);
    if (r != b.code || msg.find(b.place) == std::string::npos) std::printf("  format %d: %s\n", b.format, msg.c_str());
    CHECK(snapshot(f.task) == before);
  }
}

TEST(formats_mutated_inputs) {
  std::mt19937 rng(12345);
  const int formats[] = {QRN_DATA_FORMAT_TEXT, QRN_DATA_FORMAT_MPS, QRN_DATA_FORMAT_LP, QRN_DATA_FORMAT_OPF,
                         QRN_DATA_FORMAT_PTF, QRN_DATA_FORMAT_JSON_TASK, QRN_DATA_FORMAT_CBF, QRN_DATA_FORMAT_TASK};
  const char junk[] = " \n\"#-+.0123456789eE[]:<=>*^/xabc\\";
  int ok = 0, failed = 0;
  for (int format : formats) {
    Fixture src;
    if (format == QRN_DATA_FORMAT_CBF) {
      QRN_appendcons(src.task, 2);
      QRN_appendvars(src.task, 3);
      const double c[] = {1, 2, 3};
      QRN_putcslice(src.task, 0, 3, c);
      QRN_putaij(src.task, 0, 1, 2.5);
      QRN_putaij(src.task, 1, 2, -1);
      QRN_putconbound(src.task, 0, QRN_BK_LOWER, 1, 0);
      QRN_appendconeseq(src.task, QRN_CONE_QUAD, 0, 3, 0);
      for (int j = 0; j < 3; ++j) QRN_putvarbound(src.task, j, QRN_BK_FREE, 0, 0);
    } else {
      fill_rich(src.task, true, format != QRN_DATA_FORMAT_LP);
    }
    qrn_rescode rc;
    const std::string good = write_string(src.task, format, QRN_COMPRESS_NONE, &rc);
    CHECK_EQ(rc, QRN_RES_OK);
    Fixture f;
    fill_rich(f.task);
    const Snapshot before = snapshot(f.task);
    const std::string reference = write_string(f.task, QRN_DATA_FORMAT_PTF);
    for (int round = 0; round < 150; ++round) {
      std::string s = good;
      int edits = 1 + static_cast<int>(rng() % 3);
      for (int e = 0; e < edits && !s.empty(); ++e) {
        size_t at = rng() % s.size();
        switch (rng() % 4) {
          case 0: s.resize(at); break;                                   // truncate
          case 1: s.erase(at, 1 + rng() % 8); break;                     // delete
          case 2: s[at] = junk[rng() % (sizeof junk - 1)]; break;        // replace
          default: s.insert(at, s.substr(rng() % s.size(), rng() % 40)); // duplicate a piece
        }
      }
      qrn_rescode r;
      if (format == QRN_DATA_FORMAT_TASK) {
        std::FILE *fp = std::fopen("mutated.task", "wb");
        std::fwrite(s.data(), 1, s.size(), fp);
        std::fclose(fp);
        r = QRN_readtask(f.task, "mutated.task");
      } else {
        r = QRN_readdatastring(f.task, s.c_str(), format);
      }
      if (r == QRN_RES_OK) {
        // A mutation that still reads: put the reference content back.
        ++ok;
        CHECK_EQ(QRN_readdatastring(f.task, reference.c_str(), QRN_DATA_FORMAT_PTF), QRN_RES_OK);
        continue;
      }
      ++failed;
      CHECK(reader_code(r));
      if (!reader_code(r)) std::printf("  format %d: code %d: %s\n", format, r, last_message(f.task).c_str());
      CHECK(snapshot(f.task) == before);
    }
  }
  std::remove("mutated.task");
  CHECK(failed > ok);
}
