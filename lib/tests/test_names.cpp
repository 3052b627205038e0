// Names: UTF-8, uniqueness, lookup after renames and removals, generated
// names and the name report, through the C interface.
#include <cstring>
#include <string>
#include <vector>

#include "fixture.hpp"

namespace {

std::string varname(qrn_task_t t, int j) {
  qrn_int32 len = -1;
  CHECK_EQ(QRN_getvarnamelen(t, j, &len), QRN_RES_OK);
  std::vector<char> buf(len + 1, 'z');
  CHECK_EQ(QRN_getvarname(t, j, len + 1, buf.data()), QRN_RES_OK);
  return buf.data();
}

// The index that lookup reports for a variable name, -1 when none; checks
// that the two outputs agree.
int varindex(qrn_task_t t, const char *name) {
  qrn_int32 asgn = -5, index = -5;
  CHECK_EQ(QRN_getvarnameindex(t, name, &asgn, &index), QRN_RES_OK);
  CHECK_EQ(asgn, index >= 0 ? 1 : 0);
  return index;
}

// generatevarnames over all of subj with optional sp and named axes.
qrn_rescode generate(qrn_task_t t, const std::vector<qrn_int32> &subj, const char *fmt,
                     const std::vector<qrn_int32> &dims, const std::vector<qrn_int64> *sp = nullptr,
                     const std::vector<qrn_int32> &axes = {}, const std::vector<const char *> &names = {}) {
  return QRN_generatevarnames(t, static_cast<qrn_int32>(subj.size()), subj.data(), fmt,
                              static_cast<qrn_int32>(dims.size()), dims.data(), sp ? sp->data() : nullptr,
                              static_cast<qrn_int32>(axes.size()), axes.data(),
                              static_cast<qrn_int64>(names.size()), names.data());
}

}  // namespace

TEST(names_round_trip_utf8_and_buffer_sizes) {
  Fixture f(0, 2);
  CHECK_EQ(varname(f.task, 0), "");  // unnamed until named
  const char *greek = "\xCE\xB1\xCE\xB2-x";  // "αβ-x", 6 bytes
  CHECK_EQ(QRN_putvarname(f.task, 1, greek), QRN_RES_OK);
  CHECK_EQ(varname(f.task, 1), greek);

  // The buffer must hold the name and its NUL; a short one is not written.
  char buf[8];
  std::memset(buf, 'z', sizeof buf);
  CHECK_EQ(QRN_getvarname(f.task, 1, 6, buf), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(buf[0], 'z');
  CHECK_EQ(QRN_getvarname(f.task, 1, 7, buf), QRN_RES_OK);
  CHECK_EQ(std::string(buf), greek);
  CHECK_EQ(buf[7], 'z');
  CHECK_EQ(QRN_getvarname(f.task, 1, -1, buf), QRN_RES_ERR_NEGATIVE_COUNT);

  // Invalid UTF-8 (a bad continuation, an overlong form, a surrogate, a code
  // point above U+10FFFF, a cut sequence) is refused and the name kept.
  for (const char *bad : {"a\xC3(", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "ab\xE2\x82"}) {
    CHECK_EQ(QRN_putvarname(f.task, 1, bad), QRN_RES_ERR_NAME_UTF8);
    CHECK_EQ(varname(f.task, 1), greek);
  }
  CHECK_EQ(QRN_putvarname(f.task, 2, "x"), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(QRN_putvarname(f.task, 0, nullptr), QRN_RES_ERR_NULL_POINTER);

  CHECK_EQ(QRN_putobjname(f.task, "cost"), QRN_RES_OK);
  CHECK_EQ(QRN_puttaskname(f.task, "\xE2\x82\xAC"), QRN_RES_OK);
  qrn_int32 len = -1;
  CHECK_EQ(QRN_gettasknamelen(f.task, &len), QRN_RES_OK);
  CHECK_EQ(len, 3);
  CHECK_EQ(QRN_getobjname(f.task, 4, buf), QRN_RES_ERR_TOO_SMALL);
  CHECK_EQ(QRN_getobjname(f.task, 5, buf), QRN_RES_OK);
  CHECK_EQ(std::string(buf), "cost");
  CHECK_EQ(QRN_puttaskname(f.task, "\xFF"), QRN_RES_ERR_NAME_UTF8);
}

TEST(names_are_unique_per_kind) {
  Fixture f(0, 3);
  CHECK_EQ(QRN_appendcons(f.task, 1), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(f.task, 0, "a"), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(f.task, 0, "a"), QRN_RES_OK);  // the same item again
  CHECK_EQ(QRN_putvarname(f.task, 1, "a"), QRN_RES_ERR_NAME_DUPLICATE);
  CHECK_EQ(varname(f.task, 1), "");
  CHECK_EQ(QRN_putconname(f.task, 0, "a"), QRN_RES_OK);  // another kind may share it

  // Renaming frees the old name; an empty name frees it too.
  CHECK_EQ(QRN_putvarname(f.task, 0, "b"), QRN_RES_OK);
  CHECK_EQ(varindex(f.task, "a"), -1);
  CHECK_EQ(QRN_putvarname(f.task, 1, "a"), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(f.task, 0, ""), QRN_RES_OK);
  CHECK_EQ(varindex(f.task, "b"), -1);
  CHECK_EQ(QRN_putvarname(f.task, 2, "b"), QRN_RES_OK);
  CHECK_EQ(varindex(f.task, "a"), 1);
  CHECK_EQ(varindex(f.task, "b"), 2);
  CHECK_EQ(varindex(f.task, ""), -1);  // unnamed items are not found by ""

  qrn_int32 asgn = -1, index = -1;
  CHECK_EQ(QRN_getconnameindex(f.task, "a", &asgn, &index), QRN_RES_OK);
  CHECK_EQ(index, 0);
  CHECK_EQ(QRN_getconnameindex(f.task, "b", &asgn, &index), QRN_RES_OK);
  CHECK_EQ(asgn, 0);
  CHECK_EQ(index, -1);
}

TEST(names_lookup_follows_removals_and_clones) {
  Fixture f(0, 4);
  const char *names[] = {"v0", "v1", "v2", "v3"};
  for (int j = 0; j < 4; ++j) CHECK_EQ(QRN_putvarname(f.task, j, names[j]), QRN_RES_OK);
  qrn_int32 gone[] = {0, 2};
  CHECK_EQ(QRN_removevars(f.task, 2, gone), QRN_RES_OK);
  CHECK_EQ(varindex(f.task, "v0"), -1);
  CHECK_EQ(varindex(f.task, "v1"), 0);
  CHECK_EQ(varindex(f.task, "v2"), -1);
  CHECK_EQ(varindex(f.task, "v3"), 1);
  CHECK_EQ(varname(f.task, 1), "v3");
  CHECK_EQ(QRN_appendvars(f.task, 1), QRN_RES_OK);
  CHECK_EQ(varname(f.task, 2), "");
  CHECK_EQ(QRN_putvarname(f.task, 2, "v0"), QRN_RES_OK);  // a removed item's name is free

  // Cones: removal renumbers their names as well.
  CHECK_EQ(QRN_appendvars(f.task, 3), QRN_RES_OK);
  CHECK_EQ(QRN_appendconeseq(f.task, QRN_CONE_QUAD, 0, 1, 3), QRN_RES_OK);
  CHECK_EQ(QRN_appendconeseq(f.task, QRN_CONE_QUAD, 0, 2, 4), QRN_RES_OK);
  CHECK_EQ(QRN_putconename(f.task, 1, "k1"), QRN_RES_OK);
  qrn_int32 first[] = {0};
  CHECK_EQ(QRN_removecones(f.task, 1, first), QRN_RES_OK);
  qrn_int32 asgn = 0, index = -1;
  CHECK_EQ(QRN_getconenameindex(f.task, "k1", &asgn, &index), QRN_RES_OK);
  CHECK_EQ(index, 0);
  CHECK_EQ(QRN_putconename(f.task, 1, "k"), QRN_RES_ERR_INDEX_CONE);

  // A clone has its own copy of the names and of their index.
  qrn_task_t clone = nullptr;
  CHECK_EQ(QRN_clonetask(f.task, &clone), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(clone, 0, "renamed"), QRN_RES_OK);
  CHECK_EQ(varindex(clone, "v1"), -1);
  CHECK_EQ(varindex(clone, "renamed"), 0);
  CHECK_EQ(varindex(f.task, "v1"), 0);
  QRN_deletetask(&clone);
}

TEST(names_generated_from_a_format) {
  Fixture f(0, 6);
  std::vector<qrn_int32> all = {0, 1, 2, 3, 4, 5};
  CHECK_EQ(generate(f.task, all, "x[{},{}]", {2, 3}), QRN_RES_OK);
  CHECK_EQ(varname(f.task, 0), "x[0,0]");
  CHECK_EQ(varname(f.task, 4), "x[1,1]");
  CHECK_EQ(varindex(f.task, "x[1,2]"), 5);

  // Named axes replace indexes; sp picks positions; names move between the
  // items being renamed ("x[...]" were taken by these same items).
  std::vector<qrn_int64> sp = {5, 0};
  CHECK_EQ(generate(f.task, {0, 5}, "{{{}:{}}}", {2, 3}, &sp, {1}, {"p", "q", "r"}), QRN_RES_OK);
  CHECK_EQ(varname(f.task, 0), "{1:r}");
  CHECK_EQ(varname(f.task, 5), "{0:p}");
  CHECK_EQ(varindex(f.task, "x[0,0]"), -1);
  CHECK_EQ(generate(f.task, {1, 2}, "y", {}, nullptr), QRN_RES_ERR_NAME_FORMAT);  // 2 items, 1 position
  CHECK_EQ(generate(f.task, {}, "y{}", {0}), QRN_RES_OK);                         // an empty shape

  // Refusals leave every name as it was.
  std::vector<qrn_int64> outside = {6};
  std::vector<qrn_int64> twice = {0, 1};
  CHECK_EQ(generate(f.task, {1, 2, 3}, "z{}", {2}), QRN_RES_ERR_NAME_FORMAT);            // 3 items, 2 positions
  CHECK_EQ(generate(f.task, all, "z{}{}", {6}), QRN_RES_ERR_NAME_FORMAT);                // 2 placeholders
  CHECK_EQ(generate(f.task, all, "z{0}", {6}), QRN_RES_ERR_NAME_FORMAT);                 // only "{}" exists
  CHECK_EQ(generate(f.task, all, "z}{}", {6}), QRN_RES_ERR_NAME_FORMAT);
  CHECK_EQ(generate(f.task, {3}, "z{}", {6}, &outside), QRN_RES_ERR_NAME_POSITION);
  CHECK_EQ(generate(f.task, {3, 3}, "z{}", {6}, &twice), QRN_RES_ERR_DUP_INDEX);
  CHECK_EQ(generate(f.task, {3, 6}, "z{}", {6}, &twice), QRN_RES_ERR_INDEX_VAR);
  CHECK_EQ(generate(f.task, all, "z{}", {6}, nullptr, {0}, {"a"}), QRN_RES_ERR_NAME_FORMAT);  // 1 of 6 names
  CHECK_EQ(generate(f.task, all, "z{}", {6}, nullptr, {1}, {}), QRN_RES_ERR_NAME_FORMAT);     // no axis 1
  CHECK_EQ(generate(f.task, all, "z{}", {-6}), QRN_RES_ERR_NEGATIVE_COUNT);
  CHECK_EQ(generate(f.task, {1, 2}, "s{}", {2}, nullptr, {0}, {"a", "\xC0"}), QRN_RES_ERR_NAME_UTF8);
  // A name held by an item outside the call, or made twice, is refused.
  CHECK_EQ(QRN_putvarname(f.task, 3, "w1"), QRN_RES_OK);
  CHECK_EQ(generate(f.task, {1, 2}, "w{}", {2}), QRN_RES_ERR_NAME_DUPLICATE);
  CHECK_EQ(generate(f.task, {1, 2}, "s{}", {2}, nullptr, {0}, {"a", "a"}), QRN_RES_ERR_NAME_DUPLICATE);
  CHECK_EQ(varname(f.task, 1), "x[0,1]");
  CHECK_EQ(varname(f.task, 2), "x[0,2]");
  CHECK_EQ(varname(f.task, 3), "w1");
}

TEST(names_report_lists_names_unfit_for_text_files) {
  Fixture f(0, 8);
  Capture msg;
  CHECK_EQ(QRN_linkfunctotaskstream(f.task, QRN_STREAM_MSG, &msg, &Capture::take), QRN_RES_OK);
  CHECK_EQ(QRN_putvarname(f.task, 0, "fine"), QRN_RES_OK);
  for (int j = 1; j < 8; ++j) CHECK_EQ(QRN_putvarname(f.task, j, ("with blank " + std::to_string(j)).c_str()), QRN_RES_OK);
  CHECK_EQ(QRN_puttaskname(f.task, "tab\there"), QRN_RES_OK);

  CHECK_EQ(QRN_analyzenames(f.task, QRN_STREAM_MSG, QRN_NAME_TYPE_GENERIC), QRN_RES_OK);
  CHECK(msg.text.find("9 names, 0 not valid") != std::string::npos);
  msg.clear();
  CHECK_EQ(QRN_analyzenames(f.task, QRN_STREAM_MSG, QRN_NAME_TYPE_TEXT), QRN_RES_OK);
  CHECK(msg.text.find("9 names, 8 not valid") != std::string::npos);
  CHECK(msg.text.find("variable 1 \"with blank 1\"") != std::string::npos);
  CHECK(msg.text.find("variable 6") == std::string::npos);  // five shown per kind
  CHECK(msg.text.find("2 more variable names") != std::string::npos);
  CHECK(msg.text.find("task \"tab?here\"") != std::string::npos);
  CHECK(msg.text.find("fine") == std::string::npos);

  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_NAME_LENGTH_WARN, 3), QRN_RES_OK);
  msg.clear();
  CHECK_EQ(QRN_analyzenames(f.task, QRN_STREAM_MSG, QRN_NAME_TYPE_GENERIC), QRN_RES_OK);
  CHECK(msg.text.find("\"fine\" is longer") != std::string::npos);

  CHECK_EQ(QRN_analyzenames(f.task, 4, QRN_NAME_TYPE_TEXT), QRN_RES_ERR_STREAM);
  CHECK_EQ(QRN_analyzenames(f.task, QRN_STREAM_MSG, 7), QRN_RES_ERR_ARGUMENT);
}
