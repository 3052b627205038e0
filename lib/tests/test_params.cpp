// Parameters by identifier, by name and as text, and constants read from
// their names, through the C interface.
#include <cmath>
#include <cstring>
#include <string>

#include "fixture.hpp"

namespace {

// Reads parameters back, checking each call succeeds.
struct Params : Fixture {
  double dou(int p) {
    double v = -1;
    CHECK_EQ(QRN_getdouparam(task, p, &v), QRN_RES_OK);
    return v;
  }
  int integer(int p) {
    qrn_int32 v = -99;
    CHECK_EQ(QRN_getintparam(task, p, &v), QRN_RES_OK);
    return v;
  }
  std::string str(int p) {
    char buf[64];
    qrn_int32 len = -1;
    CHECK_EQ(QRN_getstrparam(task, p, sizeof buf, &len, buf), QRN_RES_OK);
    return std::string(buf, len);
  }
};

}  // namespace

TEST(params_defaults_counts_and_identifiers) {
  Params f;
  qrn_int32 n = -1;
  CHECK_EQ(QRN_getnumparam(f.task, QRN_PAR_TYPE_DOUBLE, &n), QRN_RES_OK);
  CHECK_EQ(n, QRN_DPAR_COUNT);
  CHECK_EQ(QRN_getnumparam(f.task, QRN_PAR_TYPE_STRING, &n), QRN_RES_OK);
  CHECK_EQ(n, QRN_SPAR_COUNT);
  CHECK_EQ(QRN_getnumparam(f.task, 3, &n), QRN_RES_ERR_ARGUMENT);

  CHECK_EQ(f.dou(QRN_DPAR_OPT_TOL), 1e-8);
  CHECK_EQ(f.dou(QRN_DPAR_TIME_LIMIT), QRN_INFINITY);
  CHECK_EQ(f.integer(QRN_IPAR_PRESOLVE), QRN_ON);
  CHECK_EQ(f.integer(QRN_IPAR_REMOTE_RETRIES), 3);
  CHECK_EQ(f.str(QRN_SPAR_DEFAULT_EXTENSION), "qtx");

  double d;
  qrn_int32 i;
  CHECK_EQ(QRN_getdouparam(f.task, QRN_DPAR_COUNT, &d), QRN_RES_ERR_PARAM_INDEX);
  CHECK_EQ(QRN_getintparam(f.task, -1, &i), QRN_RES_ERR_PARAM_INDEX);
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_COUNT, "x"), QRN_RES_ERR_PARAM_INDEX);
  CHECK_EQ(QRN_getstrparamlen(f.task, QRN_SPAR_COUNT, &i), QRN_RES_ERR_PARAM_INDEX);
}

TEST(params_values_outside_their_range_are_refused) {
  Params f;
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_OPT_TOL, 1e-6), QRN_RES_OK);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_OPT_TOL, 0.6), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_OPT_TOL, std::nan("")), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(f.dou(QRN_DPAR_OPT_TOL), 1e-6);
  CHECK_EQ(QRN_putdouparam(f.task, QRN_DPAR_OPT_TOL, 0.5), QRN_RES_OK);  // the bounds are allowed

  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_THREADS, 1025), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_THREADS, -1), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_ALGORITHM, QRN_ALGORITHM_DUAL_SIMPLEX), QRN_RES_OK);
  CHECK_EQ(QRN_putintparam(f.task, QRN_IPAR_ALGORITHM, 99), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(f.integer(QRN_IPAR_ALGORITHM), QRN_ALGORITHM_DUAL_SIMPLEX);

  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_NAME_PREFIX_VAR, "v"), QRN_RES_OK);
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_NAME_PREFIX_VAR, "a b"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_NAME_PREFIX_VAR, ""), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_REMOTE_TAG, "\xC3"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_REMOTE_TAG, nullptr), QRN_RES_ERR_NULL_POINTER);
  CHECK_EQ(f.str(QRN_SPAR_NAME_PREFIX_VAR), "v");

  CHECK_EQ(QRN_setdefaults(f.task), QRN_RES_OK);
  CHECK_EQ(f.dou(QRN_DPAR_OPT_TOL), 1e-8);
  CHECK_EQ(f.integer(QRN_IPAR_ALGORITHM), QRN_ALGORITHM_AUTO);
  CHECK_EQ(f.str(QRN_SPAR_NAME_PREFIX_VAR), "x");
}

TEST(params_by_name_and_as_text) {
  Params f;
  qrn_int32 id = -1;
  CHECK_EQ(QRN_isdouparname(f.task, "QRN_DPAR_MIP_REL_GAP", &id), QRN_RES_OK);
  CHECK_EQ(id, QRN_DPAR_MIP_REL_GAP);
  CHECK_EQ(QRN_isstrparname(f.task, "QRN_SPAR_TEMP_DIR", &id), QRN_RES_OK);
  CHECK_EQ(id, QRN_SPAR_TEMP_DIR);
  CHECK_EQ(QRN_isintparname(f.task, "QRN_DPAR_MIP_REL_GAP", &id), QRN_RES_ERR_PARAM_TYPE);
  CHECK_EQ(QRN_isintparname(f.task, "QRN_IPAR_NO_SUCH", &id), QRN_RES_ERR_PARAM_NAME);
  CHECK_EQ(QRN_isintparname(f.task, "qrn_ipar_threads", &id), QRN_RES_ERR_PARAM_NAME);

  CHECK_EQ(QRN_putnaintparam(f.task, "QRN_IPAR_THREADS", 4), QRN_RES_OK);
  CHECK_EQ(f.integer(QRN_IPAR_THREADS), 4);
  CHECK_EQ(QRN_putnadouparam(f.task, "QRN_IPAR_THREADS", 4), QRN_RES_ERR_PARAM_TYPE);
  CHECK_EQ(QRN_putnastrparam(f.task, "QRN_SPAR_LOG_FILE", "run.log"), QRN_RES_OK);
  CHECK_EQ(f.str(QRN_SPAR_LOG_FILE), "run.log");

  // Text values: numbers with blanks around them, constants in full or short.
  CHECK_EQ(QRN_putparam(f.task, "QRN_DPAR_MIP_REL_GAP", " 2.5e-3 "), QRN_RES_OK);
  CHECK_EQ(f.dou(QRN_DPAR_MIP_REL_GAP), 2.5e-3);
  CHECK_EQ(QRN_putparam(f.task, "QRN_DPAR_MIP_REL_GAP", "1e-3x"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putparam(f.task, "QRN_DPAR_MIP_REL_GAP", ""), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putparam(f.task, "QRN_DPAR_MIP_REL_GAP", "-1"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(f.dou(QRN_DPAR_MIP_REL_GAP), 2.5e-3);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_PRESOLVE", "QRN_OFF"), QRN_RES_OK);
  CHECK_EQ(f.integer(QRN_IPAR_PRESOLVE), QRN_OFF);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_PRESOLVE", "ON"), QRN_RES_OK);
  CHECK_EQ(f.integer(QRN_IPAR_PRESOLVE), QRN_ON);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_PRESOLVE", "0"), QRN_RES_OK);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_PRESOLVE", "2"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_PRESOLVE", "IPM"), QRN_RES_ERR_PARAM_VALUE);  // another set's constant
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_ALGORITHM", "IPM"), QRN_RES_OK);
  CHECK_EQ(f.integer(QRN_IPAR_ALGORITHM), QRN_ALGORITHM_IPM);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_THREADS", "ON"), QRN_RES_ERR_PARAM_VALUE);  // takes no constants
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_MIP_SEED", "4294967296"), QRN_RES_ERR_PARAM_VALUE);
  CHECK_EQ(QRN_putparam(f.task, "QRN_IPAR_MIP_SEED", "+17"), QRN_RES_OK);
  CHECK_EQ(f.integer(QRN_IPAR_MIP_SEED), 17);
  CHECK_EQ(QRN_putparam(f.task, "QRN_SPAR_REMOTE_TAG", " kept as is "), QRN_RES_OK);
  CHECK_EQ(f.str(QRN_SPAR_REMOTE_TAG), " kept as is ");
  CHECK_EQ(QRN_putparam(f.task, "QRN_XPAR_NONE", "1"), QRN_RES_ERR_PARAM_NAME);
}

TEST(params_string_reader_stays_inside_maxlen) {
  Params f;
  CHECK_EQ(QRN_putstrparam(f.task, QRN_SPAR_REMOTE_TAG, "a\xC3\xA9z"), QRN_RES_OK);  // "aéz", 4 bytes
  qrn_int32 len = -1;
  CHECK_EQ(QRN_getstrparamlen(f.task, QRN_SPAR_REMOTE_TAG, &len), QRN_RES_OK);
  CHECK_EQ(len, 4);
  char buf[8];
  std::memset(buf, '#', sizeof buf);
  CHECK_EQ(QRN_getstrparam(f.task, QRN_SPAR_REMOTE_TAG, 3, &len, buf), QRN_RES_OK);
  CHECK_EQ(len, 1);  // "a" and not half of the "é"
  CHECK_EQ(std::string(buf), "a");
  CHECK_EQ(buf[3], '#');
  CHECK_EQ(QRN_getstrparam(f.task, QRN_SPAR_REMOTE_TAG, 4, &len, buf), QRN_RES_OK);
  CHECK_EQ(len, 3);
  CHECK_EQ(QRN_getstrparam(f.task, QRN_SPAR_REMOTE_TAG, 0, &len, buf), QRN_RES_OK);
  CHECK_EQ(len, 0);
  CHECK_EQ(QRN_getstrparam(f.task, QRN_SPAR_REMOTE_TAG, -1, &len, buf), QRN_RES_ERR_NEGATIVE_COUNT);
}

TEST(params_constants_from_names) {
  Params f;
  qrn_int32 v = -1;
  CHECK_EQ(QRN_strtoconetype(f.task, "QRN_CONE_RQUAD", &v), QRN_RES_OK);
  CHECK_EQ(v, QRN_CONE_RQUAD);
  CHECK_EQ(QRN_strtoconetype(f.task, "QUAD", &v), QRN_RES_OK);
  CHECK_EQ(v, QRN_CONE_QUAD);
  CHECK_EQ(QRN_strtoconetype(f.task, "quad", &v), QRN_RES_ERR_UNKNOWN_KEY);
  CHECK_EQ(QRN_strtoconetype(f.task, "QRN_SK_BASIS", &v), QRN_RES_ERR_UNKNOWN_KEY);
  CHECK_EQ(QRN_strtosk(f.task, "QRN_SK_SUPER_BASIC", &v), QRN_RES_OK);
  CHECK_EQ(v, QRN_SK_SUPER_BASIC);
  CHECK_EQ(QRN_strtosk(f.task, "AT_UPPER", &v), QRN_RES_OK);
  CHECK_EQ(v, QRN_SK_AT_UPPER);
  CHECK_EQ(QRN_strtosk(f.task, "", &v), QRN_RES_ERR_UNKNOWN_KEY);
  CHECK_EQ(QRN_strtosk(f.task, nullptr, &v), QRN_RES_ERR_NULL_POINTER);
}
