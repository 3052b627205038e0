// Environment-wide services: response code descriptions, the version, the
// introduction banner and files linked to the environment's streams.
#include "errors.hpp"

#include <cblas.h>
#include <lapacke.h>
#include <zlib.h>

#include <ClpConfig.h>
#include <CbcConfig.h>
#include <CoinUtilsConfig.h>
#include <cholmod.h>
#include <umfpack.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>

using namespace qrn;

namespace {

struct CodeText {
  qrn_rescode code;
  const char *name;
  const char *text;
};

constexpr CodeText kCodes[] = {
#define QRN_X_TEXT(name, value, text) {value, #name, text},
    QRN_RESPONSE_CODES(QRN_X_TEXT)
#undef QRN_X_TEXT
};

// Copies at most QRN_MAX_STR_LEN - 1 bytes and a NUL.
void copy_text(char *dst, const char *src) {
  if (dst == nullptr) return;
  size_t n = std::min(std::strlen(src), size_t(QRN_MAX_STR_LEN - 1));
  std::memcpy(dst, src, n);
  dst[n] = '\0';
}

std::string compiler() {
#if defined(__clang__)
  return "clang " __clang_version__;
#elif defined(__GNUC__)
  return "GCC " __VERSION__;
#elif defined(_MSC_VER)
  return "MSVC " + std::to_string(_MSC_VER);
#else
  return "an unknown compiler";
#endif
}

std::string platform() {
#if defined(_WIN64)
  return "Windows x64";
#elif defined(__linux__) && defined(__x86_64__)
  return "Linux x86_64";
#elif defined(__linux__) && defined(__aarch64__)
  return "Linux aarch64";
#elif defined(__APPLE__)
  return "macOS";
#else
  return "an unknown platform";
#endif
}

}  // namespace

extern "C" {

QRN_API qrn_rescode QRN_CALL QRN_getcodedesc(qrn_rescode code, char *symname, char *str) {
  for (const CodeText &c : kCodes) {
    if (c.code != code) continue;
    copy_text(symname, c.name);
    copy_text(str, c.text);
    return QRN_RES_OK;
  }
  return QRN_RES_ERR_UNKNOWN_RESCODE;
}

QRN_API qrn_rescode QRN_CALL QRN_getversion(qrn_int32 *major, qrn_int32 *minor, qrn_int32 *revision) {
  put(major, qrn_int32(QRN_VERSION_MAJOR));
  put(minor, qrn_int32(QRN_VERSION_MINOR));
  put(revision, qrn_int32(QRN_VERSION_REVISION));
  return QRN_RES_OK;
}

QRN_API qrn_rescode QRN_CALL QRN_echointro(qrn_env_t env, qrn_int32 longver) {
  return env_api(env, "QRN_echointro", [&](Env &e) {
    std::ostringstream out;
    out << "QUARN optimizer library quarn64_" << QRN_VERSION_MAJOR << "_" << QRN_VERSION_MINOR << ", version "
        << QRN_VERSION_MAJOR << "." << QRN_VERSION_MINOR << "." << QRN_VERSION_REVISION << "\n";
    out << "Build: " << compiler() << ", " << platform() << ", " << __DATE__ << "\n";
    if (longver != 0) {
      lapack_int lmajor = 0, lminor = 0, lpatch = 0;
      LAPACKE_ilaver(&lmajor, &lminor, &lpatch);
      int cholmod[3] = {0, 0, 0};
      cholmod_version(cholmod);
      const char *blas = openblas_get_config();
      out << "Dependencies:\n"
          << "  " << (blas != nullptr ? blas : "OpenBLAS") << ", " << openblas_get_num_threads() << " thread(s)\n"
          << "  LAPACK " << lmajor << "." << lminor << "." << lpatch << "\n"
          << "  CHOLMOD " << cholmod[0] << "." << cholmod[1] << "." << cholmod[2] << ", UMFPACK "
          << UMFPACK_MAIN_VERSION << "." << UMFPACK_SUB_VERSION << "." << UMFPACK_SUBSUB_VERSION << "\n"
          << "  Clp " << CLP_VERSION << ", Cbc " << CBC_VERSION << ", CoinUtils " << COINUTILS_VERSION << "\n"
          << "  zlib " << zlibVersion() << "\n";
    }
    e.write(QRN_STREAM_MSG, out.str());
  });
}

QRN_API qrn_rescode QRN_CALL QRN_linkfiletoenvstream(qrn_env_t env, qrn_int32 whichstream, const char *filename,
                                                     qrn_int32 append) {
  return env_api(env, "QRN_linkfiletoenvstream", [&](Env &e) {
    if (whichstream < 0 || whichstream > 3)
      fail(QRN_RES_ERR_STREAM, "Stream " + std::to_string(whichstream) + " is not one of 0..3.");
    need_array(filename, 1, "filename");
    std::FILE *f = nullptr;
    if (*filename != '\0') {
      f = std::fopen(filename, append != 0 ? "a" : "w");
      if (f == nullptr) fail(QRN_RES_ERR_FILE_OPEN, std::string("Cannot open \"") + filename + "\" for writing.");
    }
    std::lock_guard<std::mutex> lock(e.dbg_mutex);
    if (e.files[whichstream] != nullptr) std::fclose(e.files[whichstream]);
    e.files[whichstream] = f;
  });
}

}  // extern "C"
