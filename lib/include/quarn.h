/*
 * quarn.h - C interface of the QUARN optimization library (quarn64_10_2).
 *
 * Every function returns a response code (qrn_rescode); QRN_RES_OK (0) is
 * success. A failing call records its code and message as the task's last
 * error (QRN_getlasterror) and writes the message to the task's error stream.
 *
 * Conventions
 *   - Handles: qrn_env_t and qrn_task_t are opaque. A null handle is refused
 *     with QRN_RES_ERR_NULL_ENV / QRN_RES_ERR_NULL_TASK; it never crashes.
 *   - Indexes are zero based. A slice is (first, last) with last exclusive.
 *   - Output arrays may be null: the library then skips writing them.
 *     Input arrays may be null only when their count is 0.
 *   - Functions that write a variable number of elements take a capacity
 *     (maxnum...) and refuse with QRN_RES_ERR_TOO_SMALL when it is too small.
 *   - Texts are NUL-terminated UTF-8.
 */
#ifndef QUARN_H
#define QUARN_H

#include <stddef.h>
#include <stdint.h>

/* ---- export and calling convention ------------------------------------ */
#if defined(_WIN32) || defined(__CYGWIN__)
#  define QRN_CALL __stdcall
#  if defined(QRN_BUILDING_LIBRARY)
#    define QRN_API __declspec(dllexport)
#  else
#    define QRN_API __declspec(dllimport)
#  endif
#else
#  define QRN_CALL
#  if defined(QRN_BUILDING_LIBRARY)
#    define QRN_API __attribute__((visibility("default")))
#  else
#    define QRN_API
#  endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- basic types -------------------------------------------------------- */
typedef int32_t qrn_int32;
typedef int64_t qrn_int64;
typedef double qrn_real;
typedef qrn_int32 qrn_rescode;

typedef struct qrn_env_s *qrn_env_t;
typedef struct qrn_task_s *qrn_task_t;

/* Receives one NUL-terminated text written to a stream. */
typedef void(QRN_CALL *qrn_stream_fn)(void *handle, const char *text);

/* Called while the optimizer runs: caller is a QRN_CALLBACK_* code; the three
   arrays hold QRN_DINF_COUNT, QRN_IINF_COUNT and QRN_LIINF_COUNT items (each
   may be null). A non-zero result asks the optimizer to stop. */
typedef qrn_int32(QRN_CALL *qrn_callback_fn)(qrn_task_t task, void *handle, qrn_int32 caller,
                                             const qrn_real *douinf, const qrn_int32 *intinf,
                                             const qrn_int64 *lintinf);

/* Takes count bytes written by QRN_writedatahandle; returns the number taken.
   Returning fewer than count makes the writer fail with QRN_RES_ERR_WRITE. */
typedef size_t(QRN_CALL *qrn_write_fn)(void *handle, const void *data, size_t count);

/* ---- response codes ----------------------------------------------------
 * One table: symbolic name, value, one-line description.
 * QRN_getcodedesc serves these texts. */
#define QRN_RESPONSE_CODES(X)                                                                       \
  X(QRN_RES_OK, 0, "No error occurred.")                                                          \
  X(QRN_RES_WRN_NAME_MAX_LEN, 100, "A name is longer than the recommended maximum length.")          \
  X(QRN_RES_WRN_NO_NAME, 101, "No item has the requested name.")                                  \
  X(QRN_RES_ERR_NULL_ENV, 1000, "The environment handle is null.")                                \
  X(QRN_RES_ERR_NULL_TASK, 1001, "The task handle is null.")                                      \
  X(QRN_RES_ERR_NULL_POINTER, 1002, "An array argument is null although its count is not zero.")  \
  X(QRN_RES_ERR_SPACE, 1003, "The library could not allocate memory.")                            \
  X(QRN_RES_ERR_INTERNAL, 1004, "An internal error occurred in the library.")                     \
  X(QRN_RES_ERR_ARGUMENT, 1005, "An argument has an invalid value.")                              \
  X(QRN_RES_ERR_TOO_SMALL, 1006, "An output capacity or buffer is too small for the data.")       \
  X(QRN_RES_ERR_STREAM, 1007, "The stream number is not one of the four library streams.")        \
  X(QRN_RES_ERR_FILE_OPEN, 1008, "A file could not be opened.")                                   \
  X(QRN_RES_ERR_WRITE, 1009, "Writing data failed or the receiver took fewer bytes than given.")   \
  X(QRN_RES_ERR_DATA_FORMAT, 1010, "The data format is not known or not supported here.")         \
  X(QRN_RES_ERR_COMPRESSION, 1011, "The compression type is not known or not supported here.")    \
  X(QRN_RES_ERR_STOPPED, 1012, "The callback function asked the library to stop.")                  \
  X(QRN_RES_ERR_INDEX_CON, 1100, "A constraint index is out of range.")                           \
  X(QRN_RES_ERR_INDEX_VAR, 1101, "A variable index is out of range.")                             \
  X(QRN_RES_ERR_INDEX_CONE, 1102, "A cone index is out of range.")                                \
  X(QRN_RES_ERR_SLICE, 1103, "A slice has first greater than last or lies outside the items.")    \
  X(QRN_RES_ERR_DUP_INDEX, 1104, "An index occurs more than once in a list that must not repeat.") \
  X(QRN_RES_ERR_NEGATIVE_COUNT, 1105, "A count or capacity is negative.")                         \
  X(QRN_RES_ERR_PTR_RANGE, 1106, "A pointer pair has ptrb greater than ptre or a negative entry.") \
  X(QRN_RES_ERR_MAX_CAPACITY, 1107, "A capacity is smaller than what the task already holds.")    \
  X(QRN_RES_ERR_VALUE_NAN, 1108, "A value is NaN or infinite where a finite value is required.")  \
  X(QRN_RES_ERR_BOUND_KEY, 1200, "A bound key is not one of the library's bound keys.")           \
  X(QRN_RES_ERR_BOUND_INFINITE, 1201, "A finite bound is required by the bound key but is infinite.") \
  X(QRN_RES_ERR_OBJ_SENSE, 1202, "The objective sense is not one of the library's senses.")       \
  X(QRN_RES_ERR_VAR_TYPE, 1203, "A variable type is not one of the library's variable types.")    \
  X(QRN_RES_ERR_QUAD_UPPER, 1300, "A quadratic term lies in the upper triangle (column > row).")  \
  X(QRN_RES_ERR_CONE_TYPE, 1301, "A cone type is not one of the library's cone types.")           \
  X(QRN_RES_ERR_CONE_SIZE, 1302, "A cone has too few members for its type.")                      \
  X(QRN_RES_ERR_CONE_OVERLAP, 1303, "A variable is a member of more than one cone.")              \
  X(QRN_RES_ERR_CONE_REP_VAR, 1304, "A variable occurs twice among the members of one cone.")     \
  X(QRN_RES_ERR_CONE_PARAMETER, 1305, "A cone parameter is outside its allowed range.")           \
  X(QRN_RES_ERR_NAME_FORMAT, 1400, "A name format text is invalid.")                              \
  X(QRN_RES_ERR_NAME_UTF8, 1401, "A name is not valid UTF-8.")                                    \
  X(QRN_RES_ERR_NAME_DUPLICATE, 1402, "Another item of the same kind already has the name.")        \
  X(QRN_RES_ERR_NAME_POSITION, 1403, "A position lies outside the shape of generated names.")       \
  X(QRN_RES_ERR_PARAM_INDEX, 1500, "A parameter identifier is out of range.")                     \
  X(QRN_RES_ERR_PARAM_NAME, 1501, "No parameter has the given name.")                             \
  X(QRN_RES_ERR_PARAM_VALUE, 1502, "A parameter value is outside the parameter's allowed range.") \
  X(QRN_RES_ERR_PARAM_TYPE, 1503, "The parameter has another kind than the call expects.")        \
  X(QRN_RES_ERR_INF_INDEX, 1600, "An information item identifier is out of range.")               \
  X(QRN_RES_ERR_UNKNOWN_KEY, 1601, "The text names no constant of the requested kind.") \
  /* files, strings and reports: 1900-1999 */                                                     \
  X(QRN_RES_ERR_READ_SYNTAX, 1900, "The text does not follow its format.")                        \
  X(QRN_RES_ERR_READ_EOF, 1901, "The file or text ends before its data is complete.")             \
  X(QRN_RES_ERR_READ_NUMBER, 1902, "A number in the text is malformed, NaN or out of range.")     \
  X(QRN_RES_ERR_READ_NAME_UNKNOWN, 1903, "The text refers to a name that it does not define.")    \
  X(QRN_RES_ERR_READ_NAME_DUP, 1904, "The text defines one name twice or states one entry twice.") \
  X(QRN_RES_ERR_READ_SECTION, 1905, "The text has an unknown, repeated or misplaced section.")    \
  X(QRN_RES_ERR_READ_UNSUPPORTED, 1906, "The text holds a kind of data this library cannot hold.") \
  X(QRN_RES_ERR_READ_VERSION, 1907, "The data is not of the format or of an unknown version.")    \
  X(QRN_RES_ERR_READ_INDEX, 1908, "An index or count in the text is out of range.")              \
  X(QRN_RES_ERR_GZIP, 1909, "Compressed data is corrupt or could not be compressed.")            \
  X(QRN_RES_ERR_WRITE_LOSES_NAMES, 1920, "The format cannot hold some of the task's names.")      \
  X(QRN_RES_ERR_WRITE_LOSES_QUADRATIC, 1921, "The format cannot hold the task's quadratic terms.") \
  X(QRN_RES_ERR_WRITE_LOSES_CONES, 1922, "The format cannot hold the task's cones.")              \
  X(QRN_RES_ERR_WRITE_LOSES_BOUNDS, 1923, "The format cannot state some of the task's bounds exactly.") \
  X(QRN_RES_ERR_WRITE_LOSES_INTEGER, 1924, "The format cannot hold integer variables.")           \
  X(QRN_RES_ERR_WRITE_LOSES_NUMBERS, 1925, "The format cannot state some number exactly.")        \
  X(QRN_RES_ERR_SOL_ITEM, 1940, "The solution identifier is not one of the QRN_SOL_* values.")    \
  X(QRN_RES_ERR_SOL_UNDEFINED, 1941, "The requested solution is not defined.")                    \
  X(QRN_RES_ERR_SOL_SIZE, 1942, "The solution read does not match the task's sizes.")

enum qrn_rescode_e {
#define QRN_X_ENUM(name, value, text) name = value,
  QRN_RESPONSE_CODES(QRN_X_ENUM)
#undef QRN_X_ENUM
};

/* ---- stream numbers ----------------------------------------------------- */
enum qrn_stream_e {
  QRN_STREAM_LOG = 0, /* progress of long work (optimizer log) */
  QRN_STREAM_MSG = 1, /* general messages and reports */
  QRN_STREAM_ERR = 2, /* the message of every failing call */
  QRN_STREAM_WRN = 3  /* warnings */
};

/* ---- data formats and compression -------------------------------------------
 * The two selectors of QRN_readdataformat and QRN_writedatahandle (and of the
 * parameters QRN_IPAR_INPUT_FORMAT, QRN_IPAR_OUTPUT_FORMAT and
 * QRN_IPAR_OUTPUT_COMPRESSION). Each format is described in docs/formats/.
 * By file name (QRN_DATA_FORMAT_EXTENSION): a trailing ".gz" means gzip; the
 * extension before it picks the format: .qtx TEXT, .mps MPS, .fmps FREE_MPS,
 * .lp LP, .opf OPF, .ptf PTF, .jtask and .json JSON_TASK, .task TASK, .cbf CBF.
 * A name without a known extension takes QRN_SPAR_DEFAULT_EXTENSION. */
enum qrn_dataformat_e {
  QRN_DATA_FORMAT_EXTENSION = 0, /* from a file name's extension; not for handles or strings */
  QRN_DATA_FORMAT_TEXT = 1,      /* own counted-section text (.qtx): "qrntext 1", one item per line */
  QRN_DATA_FORMAT_MPS = 2,       /* fixed MPS (.mps): names of at most 8 characters, no blanks */
  QRN_DATA_FORMAT_FREE_MPS = 3,  /* free MPS (.fmps; reads .mps too): names of any length, no blanks */
  QRN_DATA_FORMAT_LP = 4,        /* LP text (.lp): objective, subject to, bounds, general/binary, end */
  QRN_DATA_FORMAT_OPF = 5,       /* own readable text (.opf): one keyword line per item */
  QRN_DATA_FORMAT_PTF = 6,       /* own compact text (.ptf): counted arrays, whitespace-free layout */
  QRN_DATA_FORMAT_JSON_TASK = 7, /* own JSON task (.jtask, .json): data, parameters, solutions */
  QRN_DATA_FORMAT_TASK = 8,      /* own binary task (.task): everything, for fast save and restore */
  QRN_DATA_FORMAT_CBF = 9        /* Conic Benchmark Format, version 3 (.cbf) */
};

enum qrn_compress_e {
  QRN_COMPRESS_NONE = 0,
  QRN_COMPRESS_GZIP = 1 /* gzip (RFC 1952); readers also take gzip data whatever the selector */
};

/* ---- callback caller codes --------------------------------------------- */
/* The callback registered with QRN_putcallbackfunc is called with one of these
   while the library works on something long: the optimizer, and writing a
   problem (at the start and at the end of QRN_writedatahandle). A non-zero
   result stops that work: writing then fails with QRN_RES_ERR_STOPPED. */
enum qrn_callback_e {
  QRN_CALLBACK_BEGIN = 0,
  QRN_CALLBACK_ITERATION = 1,
  QRN_CALLBACK_END = 2,
  QRN_CALLBACK_BEGIN_WRITE = 3,
  QRN_CALLBACK_END_WRITE = 4
};

/* ---- bound keys ----------------------------------------------------------
 * FREE: no bounds; LOWER: bl <= x; UPPER: x <= bu; FIXED: x = bl = bu;
 * RANGED: bl <= x <= bu. Values outside the key are ignored on input and read
 * back as -inf/+inf. */
enum qrn_boundkey_e {
  QRN_BK_FREE = 0,
  QRN_BK_LOWER = 1,
  QRN_BK_UPPER = 2,
  QRN_BK_FIXED = 3,
  QRN_BK_RANGED = 4
};

/* Bounds of magnitude at least QRN_INFINITY are infinite. */
#define QRN_INFINITY 1.0e30

enum qrn_objsense_e {
  QRN_OBJECTIVE_SENSE_MINIMIZE = 0,
  QRN_OBJECTIVE_SENSE_MAXIMIZE = 1
};

enum qrn_vartype_e {
  QRN_VAR_TYPE_CONTINUOUS = 0,
  QRN_VAR_TYPE_INTEGER = 1
};

/* ---- cone types ------------------------------------------------------------
 * QUAD:  x0 >= ||x1..xn||                        (at least 1 member)
 * RQUAD: 2 x0 x1 >= ||x2..xn||^2, x0, x1 >= 0     (at least 2 members)
 * The cone parameter is unused by these types and stored as given. */
enum qrn_conetype_e {
  QRN_CONE_QUAD = 0,
  QRN_CONE_RQUAD = 1
};

/* ---- solution status keys (QRN_strtosk) ------------------------------------ */
enum qrn_stakey_e {
  QRN_SK_UNKNOWN = 0,
  QRN_SK_BASIS = 1,
  QRN_SK_SUPER_BASIC = 2,
  QRN_SK_AT_LOWER = 3,
  QRN_SK_AT_UPPER = 4,
  QRN_SK_FIXED = 5,
  QRN_SK_INFEASIBLE = 6
};

/* ---- problem types (QRN_getprobtype) -------------------------------------- */
enum qrn_probtype_e {
  QRN_PROBTYPE_LINEAR = 0,    /* linear objective and constraints */
  QRN_PROBTYPE_QUADRATIC = 1, /* quadratic objective or constraint terms */
  QRN_PROBTYPE_CONIC = 2,     /* at least one cone */
  QRN_PROBTYPE_MIXED = 3      /* quadratic terms and cones together */
};

/* ---- solutions -------------------------------------------------------------
 * A task keeps one solution per identifier. The interior solution comes from
 * an interior-point run, the basic solution from a simplex run or crossover,
 * the integer solution from the mixed-integer search. */
enum qrn_soltype_e {
  QRN_SOL_ITR = 0, /* interior solution */
  QRN_SOL_BAS = 1, /* basic solution */
  QRN_SOL_ITG = 2  /* integer solution */
};
#define QRN_SOL_COUNT 3

/* What is known about the problem when a solution is reported. */
enum qrn_prosta_e {
  QRN_PRO_STA_UNKNOWN = 0,
  QRN_PRO_STA_PRIM_AND_DUAL_FEAS = 1,
  QRN_PRO_STA_PRIM_FEAS = 2,
  QRN_PRO_STA_DUAL_FEAS = 3,
  QRN_PRO_STA_PRIM_INFEAS = 4,           /* the solution holds a primal infeasibility certificate */
  QRN_PRO_STA_DUAL_INFEAS = 5,           /* the solution holds a dual infeasibility certificate (a ray) */
  QRN_PRO_STA_PRIM_AND_DUAL_INFEAS = 6,
  QRN_PRO_STA_ILL_POSED = 7,
  QRN_PRO_STA_PRIM_INFEAS_OR_UNBOUNDED = 8
};

/* What a solution is. */
enum qrn_solsta_e {
  QRN_SOL_STA_UNKNOWN = 0,
  QRN_SOL_STA_OPTIMAL = 1,
  QRN_SOL_STA_PRIM_FEAS = 2,
  QRN_SOL_STA_DUAL_FEAS = 3,
  QRN_SOL_STA_PRIM_AND_DUAL_FEAS = 4,
  QRN_SOL_STA_PRIM_INFEAS_CER = 5, /* y, slc, suc, slx, sux, snx form a Farkas certificate */
  QRN_SOL_STA_DUAL_INFEAS_CER = 6, /* xx, xc form a primal ray of improving objective */
  QRN_SOL_STA_PRIM_ILLPOSED_CER = 7,
  QRN_SOL_STA_DUAL_ILLPOSED_CER = 8,
  QRN_SOL_STA_INTEGER_OPTIMAL = 9
};

/* ---- parameter kinds (QRN_getnumparam) ------------------------------------ */
enum qrn_parametertype_e {
  QRN_PAR_TYPE_DOUBLE = 0,
  QRN_PAR_TYPE_INTEGER = 1,
  QRN_PAR_TYPE_STRING = 2
};

/* ---- name kinds (QRN_analyzenames) ---------------------------------------- */
enum qrn_nametype_e {
  QRN_NAME_TYPE_GENERIC = 0, /* any UTF-8 text */
  QRN_NAME_TYPE_TEXT = 1     /* names usable in the text file format (no blanks) */
};

/* QRN_PARAMETERS_BEGIN: parameter identifiers (filled by the parameter table). */
/* Parameters are set and read by identifier or by name, the name being the
   constant's name (e.g. "QRN_DPAR_OPT_TOL"). Each comment gives the default
   and the allowed values: a range [low, high] or a set of constants. A value
   outside them is refused with QRN_RES_ERR_PARAM_VALUE and leaves the
   parameter unchanged. QRN_putparam reads integer values as decimal numbers
   or, for parameters that take constants, as a constant's name in full or
   without its prefix ("QRN_ON" or "ON", "QRN_ALGORITHM_IPM" or "IPM").
   String values must be valid UTF-8; "token" values are also non-empty and
   free of blanks and control characters. */

/* Values of integer parameters. */
enum qrn_onoff_e { QRN_OFF = 0, QRN_ON = 1 };
enum qrn_algorithm_e { QRN_ALGORITHM_AUTO = 0, QRN_ALGORITHM_IPM = 1,
  QRN_ALGORITHM_PRIMAL_SIMPLEX = 2, QRN_ALGORITHM_DUAL_SIMPLEX = 3, QRN_ALGORITHM_ANY_SIMPLEX = 4 };
enum qrn_scaling_e { QRN_SCALING_AUTO = 0, QRN_SCALING_NONE = 1, QRN_SCALING_GEOMETRIC = 2,
  QRN_SCALING_EQUILIBRATE = 3 };
enum qrn_ordering_e { QRN_ORDERING_AUTO = 0, QRN_ORDERING_MIN_DEGREE = 1,
  QRN_ORDERING_NESTED_DISSECTION = 2, QRN_ORDERING_NONE = 3 };
enum qrn_solveform_e { QRN_SOLVE_FORM_AUTO = 0, QRN_SOLVE_FORM_PRIMAL = 1,
  QRN_SOLVE_FORM_DUAL = 2 };
enum qrn_pricing_e { QRN_PRICING_AUTO = 0, QRN_PRICING_DANTZIG = 1, QRN_PRICING_DEVEX = 2,
  QRN_PRICING_STEEPEST_EDGE = 3, QRN_PRICING_PARTIAL = 4 };
enum qrn_branchdir_e { QRN_BRANCH_AUTO = 0, QRN_BRANCH_UP = 1, QRN_BRANCH_DOWN = 2,
  QRN_BRANCH_NEAREST = 3 };
enum qrn_nodesel_e { QRN_NODE_SELECT_AUTO = 0, QRN_NODE_SELECT_BEST_BOUND = 1,
  QRN_NODE_SELECT_DEPTH_FIRST = 2, QRN_NODE_SELECT_BEST_ESTIMATE = 3 };

enum qrn_dparam_e {
  /* 1e-8 [1e-14, 0.5]: largest relative primal infeasibility of a solution reported feasible */
  QRN_DPAR_PRIMAL_FEAS_TOL = 0,
  /* 1e-8 [1e-14, 0.5]: largest relative dual infeasibility of a solution reported feasible */
  QRN_DPAR_DUAL_FEAS_TOL = 1,
  /* 1e-8 [1e-14, 0.5]: relative primal-dual gap at which a continuous problem counts as solved */
  QRN_DPAR_OPT_TOL = 2,
  /* 1e-10 [1e-14, 0.5]: tolerance of infeasibility certificates */
  QRN_DPAR_INFEAS_TOL = 3,
  /* 0.99 [0.5, 0.9999]: share of the step to the boundary that the interior-point method takes */
  QRN_DPAR_IPM_STEP_FRACTION = 4,
  /* 0.1 [0, 1]: centering weight of the interior-point search direction */
  QRN_DPAR_IPM_CENTERING = 5,
  /* 1e-6 [0, 1]: relative progress below which the interior-point method counts as stalled */
  QRN_DPAR_IPM_STALL_TOL = 6,
  /* 1e-7 [1e-12, 0.99]: smallest relative pivot that the simplex methods accept */
  QRN_DPAR_SIMPLEX_PIVOT_TOL = 7,
  /* 1e12 [1, 1e30]: basis condition estimate above which the simplex methods pivot more
     strictly */
  QRN_DPAR_BASIS_COND_LIMIT = 8,
  /* 1e-4 [0, 1e30]: relative gap at which the mixed-integer search stops */
  QRN_DPAR_MIP_REL_GAP = 9,
  /* 1e-10 [0, 1e30]: absolute gap at which the mixed-integer search stops */
  QRN_DPAR_MIP_ABS_GAP = 10,
  /* 1e-5 [1e-9, 0.5]: distance to an integer within which a value counts as integral */
  QRN_DPAR_MIP_INT_TOL = 11,
  /* 0.05 [0, 1]: share of the search time given to primal heuristics */
  QRN_DPAR_MIP_HEUR_EFFORT = 12,
  /* 1e30 [-1e30, 1e30]: nodes that cannot beat this objective are pruned; magnitude 1e30: none */
  QRN_DPAR_MIP_OBJ_CUTOFF = 13,
  /* 1e30 [0, 1e30]: seconds for the mixed-integer search; 1e30: no limit */
  QRN_DPAR_MIP_TIME_LIMIT = 14,
  /* 1e30 [0, 1e30]: seconds for one optimization; 1e30: no limit */
  QRN_DPAR_TIME_LIMIT = 15,
  /* -1e30 [-1e30, 1e30]: a minimization stops at a feasible objective at most this; -1e30:
     never */
  QRN_DPAR_OBJ_TARGET_MIN = 16,
  /* 1e30 [-1e30, 1e30]: a maximization stops at a feasible objective at least this; 1e30:
     never */
  QRN_DPAR_OBJ_TARGET_MAX = 17,
  /* 1e-9 [0, 0.01]: tolerance of presolve reductions */
  QRN_DPAR_PRESOLVE_TOL = 18,
  /* 2 [1, 1e30]: largest growth of matrix non-zeros that presolve substitutions may cause */
  QRN_DPAR_PRESOLVE_FILL_LIMIT = 19,
  /* 1e9 [0, 1e30]: the data check warns about coefficients of larger magnitude */
  QRN_DPAR_DATA_LARGE_COEF = 20,
  /* 1e-9 [0, 1e30]: the data check warns about non-zero coefficients of smaller magnitude */
  QRN_DPAR_DATA_SMALL_COEF = 21,
  /* 1e-10 [0, 1e30]: negative eigenvalue tolerated by the convexity check */
  QRN_DPAR_CONVEXITY_TOL = 22,
  /* 1 [0, 1e30]: penalty weight of feasibility repair for items without their own */
  QRN_DPAR_REPAIR_WEIGHT = 23,
  /* 1e-12 [0, 1]: eigenvalue below which a semidefinite matrix counts as singular */
  QRN_DPAR_SEMIDEF_EIG_TOL = 24,
  /* 60 [0, 1e30]: seconds to wait for a remote server to answer */
  QRN_DPAR_REMOTE_TIMEOUT = 25,
  /* 0.1 [0, 1e30]: least seconds between two iteration callbacks */
  QRN_DPAR_CALLBACK_INTERVAL = 26,
};
#define QRN_DPAR_COUNT 27

enum qrn_iparam_e {
  /* 1 [0, 3]: 0: silent, 1: summaries, 2: iteration lines, 3: details */
  QRN_IPAR_LOG_LEVEL = 0,
  /* 1000 [1, INT32_MAX]: nodes between two log lines of the mixed-integer search */
  QRN_IPAR_LOG_MIP_FREQ = 1,
  /* QRN_ALGORITHM_AUTO {qrn_algorithm_e}: algorithm for continuous problems and relaxations */
  QRN_IPAR_ALGORITHM = 2,
  /* 0 [0, 1024]: threads to use; 0: one per core */
  QRN_IPAR_THREADS = 3,
  /* QRN_ON {qrn_onoff_e}: simplify the problem before optimizing */
  QRN_IPAR_PRESOLVE = 4,
  /* -1 [-1, 1000]: most presolve passes; -1: until no more progress */
  QRN_IPAR_PRESOLVE_PASSES = 5,
  /* QRN_ON {qrn_onoff_e}: let presolve use dual arguments */
  QRN_IPAR_PRESOLVE_DUAL_REDUCTIONS = 6,
  /* QRN_SCALING_AUTO {qrn_scaling_e}: scaling of the constraint matrix */
  QRN_IPAR_SCALING = 7,
  /* 400 [0, INT32_MAX]: most interior-point iterations */
  QRN_IPAR_IPM_MAX_ITER = 8,
  /* QRN_ORDERING_AUTO {qrn_ordering_e}: fill-reducing ordering of the interior-point
     factorization */
  QRN_IPAR_IPM_ORDERING = 9,
  /* QRN_SOLVE_FORM_AUTO {qrn_solveform_e}: solve the primal or the dual problem */
  QRN_IPAR_IPM_SOLVE_FORM = 10,
  /* QRN_ON {qrn_onoff_e}: compute a basic solution after the interior-point method */
  QRN_IPAR_CROSSOVER = 11,
  /* 10000000 [0, INT32_MAX]: most simplex iterations */
  QRN_IPAR_SIMPLEX_MAX_ITER = 12,
  /* QRN_PRICING_AUTO {qrn_pricing_e}: pricing rule of the simplex methods */
  QRN_IPAR_SIMPLEX_PRICING = 13,
  /* INT32_MAX [0, INT32_MAX]: most nodes of the mixed-integer search */
  QRN_IPAR_MIP_NODE_LIMIT = 14,
  /* INT32_MAX [1, INT32_MAX]: the mixed-integer search stops after this many integer solutions */
  QRN_IPAR_MIP_SOLUTION_LIMIT = 15,
  /* QRN_ON {qrn_onoff_e}: generate cuts */
  QRN_IPAR_MIP_CUTS = 16,
  /* 10 [0, 1000]: most cut rounds at the root */
  QRN_IPAR_MIP_CUT_ROUNDS = 17,
  /* QRN_ON {qrn_onoff_e}: run primal heuristics */
  QRN_IPAR_MIP_HEURISTICS = 18,
  /* 1 [0, 3]: probing effort; 0: none */
  QRN_IPAR_MIP_PROBING_LEVEL = 19,
  /* QRN_BRANCH_AUTO {qrn_branchdir_e}: child node explored first */
  QRN_IPAR_MIP_BRANCH_DIR = 20,
  /* QRN_NODE_SELECT_AUTO {qrn_nodesel_e}: order in which open nodes are explored */
  QRN_IPAR_MIP_NODE_SELECTION = 21,
  /* 0 [0, INT32_MAX]: seed of the randomized choices */
  QRN_IPAR_MIP_SEED = 22,
  /* QRN_ON {qrn_onoff_e}: detect and exploit symmetry */
  QRN_IPAR_MIP_SYMMETRY = 23,
  /* QRN_ON {qrn_onoff_e}: check quadratic terms for convexity before optimizing */
  QRN_IPAR_CHECK_CONVEXITY = 24,
  /* QRN_ON {qrn_onoff_e}: check the data for large and small coefficients before optimizing */
  QRN_IPAR_DATA_CHECK = 25,
  /* QRN_OFF {qrn_onoff_e}: write an infeasibility report after proving infeasibility */
  QRN_IPAR_INFEAS_REPORT = 26,
  /* QRN_OFF {qrn_onoff_e}: write a solution summary after each optimization */
  QRN_IPAR_SOLUTION_SUMMARY = 27,
  /* QRN_OFF {qrn_onoff_e}: sensitivity analysis of every item after each optimization */
  QRN_IPAR_SENSITIVITY_ALL = 28,
  /* QRN_DATA_FORMAT_EXTENSION {qrn_dataformat_e}: format of files read; EXTENSION: from the
     file name */
  QRN_IPAR_INPUT_FORMAT = 29,
  /* QRN_DATA_FORMAT_EXTENSION {qrn_dataformat_e}: format of files written; EXTENSION: from the
     file name */
  QRN_IPAR_OUTPUT_FORMAT = 30,
  /* QRN_COMPRESS_NONE {qrn_compress_e}: compression of files written */
  QRN_IPAR_OUTPUT_COMPRESSION = 31,
  /* QRN_ON {qrn_onoff_e}: write item names (OFF: names made from the QRN_SPAR_NAME_PREFIX_*
     values) */
  QRN_IPAR_OUTPUT_NAMES = 32,
  /* 17 [1, 17]: significant digits of numbers written */
  QRN_IPAR_OUTPUT_PRECISION = 33,
  /* QRN_ON {qrn_onoff_e}: apply parameter settings found in problem files */
  QRN_IPAR_INPUT_PARAMS = 34,
  /* 256 [1, INT32_MAX]: QRN_analyzenames reports names longer than this many bytes */
  QRN_IPAR_NAME_LENGTH_WARN = 35,
  /* 3 [0, 100]: connection attempts to a remote server before giving up */
  QRN_IPAR_REMOTE_RETRIES = 36,
};
#define QRN_IPAR_COUNT 37

enum qrn_sparam_e {
  /* "" any: file that receives a copy of the log stream; empty: none */
  QRN_SPAR_LOG_FILE = 0,
  /* "" any: file the solutions are written to after each optimization; empty: none */
  QRN_SPAR_SOLUTION_FILE = 1,
  /* "" any: file the sensitivity report is written to; empty: the message stream */
  QRN_SPAR_SENSITIVITY_FILE = 2,
  /* "" any: directory for the problem dumps of failed optimizations; empty: none */
  QRN_SPAR_DUMP_DIR = 3,
  /* "" any: directory for temporary files; empty: the system's */
  QRN_SPAR_TEMP_DIR = 4,
  /* "" any: host:port of the remote optimization server; empty: optimize locally */
  QRN_SPAR_REMOTE_SERVER = 5,
  /* "" any: label attached to remote jobs */
  QRN_SPAR_REMOTE_TAG = 6,
  /* "qtx" token: extension assumed for file names without one */
  QRN_SPAR_DEFAULT_EXTENSION = 7,
  /* "c" token: prefix of generic constraint names in files written */
  QRN_SPAR_NAME_PREFIX_CON = 8,
  /* "x" token: prefix of generic variable names in files written */
  QRN_SPAR_NAME_PREFIX_VAR = 9,
  /* "k" token: prefix of generic cone names in files written */
  QRN_SPAR_NAME_PREFIX_CONE = 10,
};
#define QRN_SPAR_COUNT 11
/* QRN_PARAMETERS_END */

/* QRN_INFORMATION_BEGIN: information item identifiers. */
/* Information items describe the task's last optimization (and, for the
   READ and WRITE items, its last problem read or write). Each starts at 0,
   except those marked [-1], which start at -1 meaning "not computed"; each
   keeps its value until the next run that computes it. */
#define QRN_DINF_COUNT 111
#define QRN_IINF_COUNT 117
#define QRN_LIINF_COUNT 21
enum qrn_dinfitem_e {
  QRN_DINF_TIME_TOTAL = 0,                  /* wall-clock seconds of the last optimization */
  QRN_DINF_TIME_CPU = 1,                    /* processor seconds of the last optimization */
  QRN_DINF_TIME_PRESOLVE = 2,               /* seconds in presolve */
  QRN_DINF_TIME_SCALING = 3,                /* seconds in scaling */
  QRN_DINF_TIME_DATA_CHECK = 4,             /* seconds checking the data before optimizing */
  QRN_DINF_TIME_IPM = 5,                    /* seconds in the interior-point method */
  QRN_DINF_TIME_IPM_ORDERING = 6,           /* seconds ordering the interior-point factorization */
  QRN_DINF_TIME_IPM_FACTOR = 7,             /* seconds in interior-point factorizations */
  QRN_DINF_TIME_CROSSOVER = 8,              /* seconds in crossover to a basic solution */
  QRN_DINF_TIME_SIMPLEX = 9,                /* seconds in the simplex methods */
  QRN_DINF_TIME_SIMPLEX_FACTOR = 10,        /* seconds in basis factorizations */
  QRN_DINF_TIME_MIP = 11,                   /* seconds in the mixed-integer search */
  QRN_DINF_TIME_MIP_ROOT = 12,              /* seconds solving the root relaxation */
  QRN_DINF_TIME_MIP_CUTS = 13,              /* seconds generating cuts */
  QRN_DINF_TIME_MIP_HEURISTICS = 14,        /* seconds in primal heuristics */
  QRN_DINF_TIME_MIP_PROBING = 15,           /* seconds in probing */
  QRN_DINF_TIME_MIP_FIRST_SOLUTION = 16,    /* [-1] seconds until the first integer solution */
  QRN_DINF_TIME_MIP_BEST_SOLUTION = 17,     /* [-1] seconds until the best integer solution */
  QRN_DINF_TIME_READ = 18,                  /* seconds of the last problem read */
  QRN_DINF_TIME_WRITE = 19,                 /* seconds of the last problem write */
  QRN_DINF_TIME_CALLBACKS = 20,             /* seconds spent in the callback */
  QRN_DINF_TIME_REMOTE = 21,                /* seconds waiting for a remote server */
  QRN_DINF_TIME_SENSITIVITY = 22,           /* seconds of the last sensitivity analysis */
  QRN_DINF_TIME_REPAIR = 23,                /* seconds of the last feasibility repair */
  QRN_DINF_IPM_PRIMAL_OBJ = 24,             /* primal objective at the last interior-point iterate */
  QRN_DINF_IPM_DUAL_OBJ = 25,               /* dual objective at the last interior-point iterate */
  QRN_DINF_IPM_PRIMAL_INFEAS = 26,          /* [-1] largest primal infeasibility of the last iterate */
  QRN_DINF_IPM_DUAL_INFEAS = 27,            /* [-1] largest dual infeasibility of the last iterate */
  QRN_DINF_IPM_PRIMAL_RESIDUAL_REL = 28,    /* [-1] relative primal residual of the last iterate */
  QRN_DINF_IPM_DUAL_RESIDUAL_REL = 29,      /* [-1] relative dual residual of the last iterate */
  QRN_DINF_IPM_COMPLEMENTARITY = 30,        /* [-1] complementarity of the last iterate */
  QRN_DINF_IPM_REL_GAP = 31,                /* [-1] relative objective gap of the last iterate */
  QRN_DINF_IPM_MU = 32,                     /* [-1] barrier parameter of the last iterate */
  QRN_DINF_IPM_TAU = 33,                    /* [-1] homogeneous scaling variable tau */
  QRN_DINF_IPM_KAPPA = 34,                  /* [-1] homogeneous scaling variable kappa */
  QRN_DINF_IPM_PRIMAL_STEP = 35,            /* last primal step length */
  QRN_DINF_IPM_DUAL_STEP = 36,              /* last dual step length */
  QRN_DINF_IPM_FLOP_RATE = 37,              /* floating-point operations per second in factorizations */
  QRN_DINF_IPM_FACTOR_DENSITY = 38,         /* share of non-zeros in the factor */
  QRN_DINF_IPM_FILL_RATIO = 39,             /* factor non-zeros over system non-zeros */
  QRN_DINF_SPX_PRIMAL_OBJ = 40,             /* primal objective of the last basis */
  QRN_DINF_SPX_DUAL_OBJ = 41,               /* dual objective of the last basis */
  QRN_DINF_SPX_PRIMAL_INFEAS = 42,          /* [-1] largest primal infeasibility of the last basis */
  QRN_DINF_SPX_DUAL_INFEAS = 43,            /* [-1] largest dual infeasibility of the last basis */
  QRN_DINF_SPX_SUM_PRIMAL_INFEAS = 44,      /* [-1] sum of primal infeasibilities of the last basis */
  QRN_DINF_SPX_SUM_DUAL_INFEAS = 45,        /* [-1] sum of dual infeasibilities of the last basis */
  QRN_DINF_SPX_BASIS_COND = 46,             /* [-1] condition estimate of the last basis */
  QRN_DINF_SPX_FACTOR_DENSITY = 47,         /* share of non-zeros in the basis factor */
  QRN_DINF_SPX_PIVOT_TOL_USED = 48,         /* pivot tolerance in force at the end */
  QRN_DINF_SPX_PERTURBATION = 49,           /* largest bound or cost perturbation applied */
  QRN_DINF_CROSSOVER_PRIMAL_INFEAS = 50,    /* [-1] largest primal infeasibility after crossover */
  QRN_DINF_CROSSOVER_DUAL_INFEAS = 51,      /* [-1] largest dual infeasibility after crossover */
  QRN_DINF_MIP_OBJ = 52,                    /* objective of the best integer solution */
  QRN_DINF_MIP_OBJ_BOUND = 53,              /* best objective bound */
  QRN_DINF_MIP_FIRST_OBJ = 54,              /* objective of the first integer solution */
  QRN_DINF_MIP_ROOT_BOUND = 55,             /* objective bound of the root relaxation before cuts */
  QRN_DINF_MIP_ROOT_CUT_BOUND = 56,         /* objective bound of the root relaxation after cuts */
  QRN_DINF_MIP_REL_GAP = 57,                /* [-1] relative gap of the best solution to the bound */
  QRN_DINF_MIP_ABS_GAP = 58,                /* [-1] absolute gap of the best solution to the bound */
  QRN_DINF_MIP_ROOT_GAP_CLOSED = 59,        /* [-1] share of the root gap closed by cuts */
  QRN_DINF_MIP_MAX_INT_VIOL = 60,           /* [-1] largest integrality violation of the best solution */
  QRN_DINF_MIP_MAX_CON_VIOL = 61,           /* [-1] largest constraint violation of the best solution */
  QRN_DINF_MIP_MAX_BOUND_VIOL = 62,         /* [-1] largest bound violation of the best solution */
  QRN_DINF_MIP_NODES_PER_SECOND = 63,       /* nodes processed per second */
  QRN_DINF_MIP_AVG_DEPTH = 64,              /* average depth of the processed nodes */
  QRN_DINF_MIP_LP_ITER_PER_NODE = 65,       /* relaxation iterations per node */
  QRN_DINF_MIP_TREE_MEMORY_MB = 66,         /* megabytes held by the search tree at its peak */
  QRN_DINF_PRESOLVE_ROW_REDUCTION = 67,     /* share of constraints removed by presolve */
  QRN_DINF_PRESOLVE_COL_REDUCTION = 68,     /* share of variables removed by presolve */
  QRN_DINF_PRESOLVE_NNZ_REDUCTION = 69,     /* share of matrix non-zeros removed by presolve */
  QRN_DINF_PRESOLVE_OBJ_OFFSET = 70,        /* objective constant contributed by eliminated variables */
  QRN_DINF_SCALING_OBJ_FACTOR = 71,         /* factor applied to the objective by scaling */
  QRN_DINF_INTERIOR_PRIMAL_OBJ = 72,        /* primal objective (interior solution) */
  QRN_DINF_INTERIOR_DUAL_OBJ = 73,          /* dual objective (interior solution) */
  QRN_DINF_INTERIOR_PRIMAL_CON_VIOL = 74,   /* [-1] largest constraint violation (interior solution) */
  QRN_DINF_INTERIOR_PRIMAL_BOUND_VIOL = 75, /* [-1] largest bound violation (interior solution) */
  QRN_DINF_INTERIOR_PRIMAL_CONE_VIOL = 76,  /* [-1] largest cone violation (interior solution) */
  QRN_DINF_INTERIOR_DUAL_CON_VIOL = 77,     /* [-1] largest dual constraint violation (interior) */
  QRN_DINF_INTERIOR_DUAL_BOUND_VIOL = 78,   /* [-1] largest dual bound violation (interior solution) */
  QRN_DINF_INTERIOR_DUAL_CONE_VIOL = 79,    /* [-1] largest dual cone violation (interior solution) */
  QRN_DINF_INTERIOR_X_NORM = 80,            /* largest magnitude of a variable (interior solution) */
  QRN_DINF_INTERIOR_Y_NORM = 81,            /* largest magnitude of a dual (interior solution) */
  QRN_DINF_BASIC_PRIMAL_OBJ = 82,           /* primal objective (basic solution) */
  QRN_DINF_BASIC_DUAL_OBJ = 83,             /* dual objective (basic solution) */
  QRN_DINF_BASIC_PRIMAL_CON_VIOL = 84,      /* [-1] largest constraint violation (basic solution) */
  QRN_DINF_BASIC_PRIMAL_BOUND_VIOL = 85,    /* [-1] largest bound violation (basic solution) */
  QRN_DINF_BASIC_DUAL_CON_VIOL = 86,        /* [-1] largest dual constraint violation (basic solution) */
  QRN_DINF_BASIC_DUAL_BOUND_VIOL = 87,      /* [-1] largest dual bound violation (basic solution) */
  QRN_DINF_BASIC_X_NORM = 88,               /* largest magnitude of a variable (basic solution) */
  QRN_DINF_BASIC_Y_NORM = 89,               /* largest magnitude of a dual (basic solution) */
  QRN_DINF_INTEGER_PRIMAL_OBJ = 90,         /* objective (integer solution) */
  QRN_DINF_INTEGER_PRIMAL_CON_VIOL = 91,    /* [-1] largest constraint violation (integer solution) */
  QRN_DINF_INTEGER_PRIMAL_BOUND_VIOL = 92,  /* [-1] largest bound violation (integer solution) */
  QRN_DINF_INTEGER_PRIMAL_CONE_VIOL = 93,   /* [-1] largest cone violation (integer solution) */
  QRN_DINF_INTEGER_INT_VIOL = 94,           /* [-1] largest integrality violation (integer solution) */
  QRN_DINF_INTEGER_X_NORM = 95,             /* largest magnitude of a variable (integer solution) */
  QRN_DINF_DATA_A_MAX_ABS = 96,             /* largest magnitude of a matrix coefficient */
  QRN_DINF_DATA_A_MIN_ABS = 97,             /* smallest magnitude of a non-zero matrix coefficient */
  QRN_DINF_DATA_C_MAX_ABS = 98,             /* largest magnitude of an objective coefficient */
  QRN_DINF_DATA_CON_BOUND_MAX_ABS = 99,     /* largest magnitude of a finite constraint bound */
  QRN_DINF_DATA_VAR_BOUND_MAX_ABS = 100,    /* largest magnitude of a finite variable bound */
  QRN_DINF_DATA_QOBJ_MAX_ABS = 101,         /* largest magnitude of a quadratic objective coefficient */
  QRN_DINF_DATA_QCON_MAX_ABS = 102,         /* largest magnitude of a quadratic constraint coefficient */
  QRN_DINF_CONVEXITY_MIN_EIG = 103,         /* smallest eigenvalue met by the convexity check */
  QRN_DINF_MEM_PEAK_MB = 104,               /* peak megabytes used by the last optimization */
  QRN_DINF_MEM_FACTOR_MB = 105,             /* megabytes held by factorizations at their peak */
  QRN_DINF_REPAIR_PENALTY = 106,            /* [-1] weighted violation of the last feasibility repair */
  QRN_DINF_REPAIR_OBJ = 107,                /* objective of the repaired problem's solution */
  QRN_DINF_PROGRESS_FRACTION = 108,         /* estimated share of the work done, 0 to 1 */
  QRN_DINF_CALLBACK_LAST_TIME = 109,        /* seconds since the start at the last callback */
  QRN_DINF_REMOTE_QUEUE_TIME = 110,         /* seconds a remote job waited in the server's queue */
};
enum qrn_iinfitem_e {
  QRN_IINF_IPM_ITER = 0,                   /* interior-point iterations */
  QRN_IINF_IPM_CORRECTORS = 1,             /* corrector steps taken by the interior-point method */
  QRN_IINF_IPM_FACTOR_DIM = 2,             /* dimension of the factored interior-point system */
  QRN_IINF_IPM_DENSE_COLUMNS = 3,          /* columns treated as dense in the interior-point system */
  QRN_IINF_IPM_SOLVE_FORM_USED = 4,        /* [-1] qrn_solveform_e value used by the interior-point code */
  QRN_IINF_IPM_ORDERING_USED = 5,          /* [-1] qrn_ordering_e value used by the interior-point code */
  QRN_IINF_IPM_STALLED = 6,                /* 1 when the interior-point method stalled */
  QRN_IINF_IPM_PRIMAL_CERT = 7,            /* 1 when a primal infeasibility certificate was found */
  QRN_IINF_IPM_DUAL_CERT = 8,              /* 1 when a dual infeasibility certificate was found */
  QRN_IINF_SPX_ITER = 9,                   /* simplex iterations, both methods */
  QRN_IINF_SPX_PRIMAL_ITER = 10,           /* primal simplex iterations */
  QRN_IINF_SPX_DUAL_ITER = 11,             /* dual simplex iterations */
  QRN_IINF_SPX_PHASE1_ITER = 12,           /* simplex iterations spent reaching feasibility */
  QRN_IINF_SPX_BOUND_FLIPS = 13,           /* bound flips of the dual simplex method */
  QRN_IINF_SPX_DEGENERATE_PIVOTS = 14,     /* degenerate simplex pivots */
  QRN_IINF_SPX_REFACTORIZATIONS = 15,      /* basis refactorizations */
  QRN_IINF_SPX_BASIS_REPAIRS = 16,         /* singular bases repaired */
  QRN_IINF_SPX_PRICING_USED = 17,          /* [-1] qrn_pricing_e value used by the simplex method */
  QRN_IINF_SPX_NUM_PRIMAL_INFEAS = 18,     /* primal infeasible basic variables at the end */
  QRN_IINF_SPX_NUM_DUAL_INFEAS = 19,       /* dual infeasible non-basic variables at the end */
  QRN_IINF_CROSSOVER_PRIMAL_ITER = 20,     /* primal crossover iterations */
  QRN_IINF_CROSSOVER_DUAL_ITER = 21,       /* dual crossover iterations */
  QRN_IINF_CROSSOVER_CLEANUP_ITER = 22,    /* simplex iterations after crossover */
  QRN_IINF_MIP_SOLUTIONS = 23,             /* integer solutions found */
  QRN_IINF_MIP_HEUR_SOLUTIONS = 24,        /* integer solutions found by heuristics */
  QRN_IINF_MIP_INCUMBENT_UPDATES = 25,     /* improvements of the best integer solution */
  QRN_IINF_MIP_FIRST_SOLUTION_NODE = 26,   /* [-1] node at which the first integer solution was found */
  QRN_IINF_MIP_BEST_SOLUTION_NODE = 27,    /* [-1] node at which the best integer solution was found */
  QRN_IINF_MIP_ACTIVE_NODES = 28,          /* open nodes when the search ended */
  QRN_IINF_MIP_MAX_DEPTH = 29,             /* deepest node processed */
  QRN_IINF_MIP_RESTARTS = 30,              /* restarts of the search */
  QRN_IINF_MIP_ROOT_CUT_ROUNDS = 31,       /* cut rounds at the root */
  QRN_IINF_MIP_CUTS_GOMORY = 32,           /* Gomory cuts added */
  QRN_IINF_MIP_CUTS_MIR = 33,              /* mixed-integer rounding cuts added */
  QRN_IINF_MIP_CUTS_COVER = 34,            /* knapsack cover cuts added */
  QRN_IINF_MIP_CUTS_FLOW_COVER = 35,       /* flow cover cuts added */
  QRN_IINF_MIP_CUTS_CLIQUE = 36,           /* clique cuts added */
  QRN_IINF_MIP_CUTS_IMPLIED_BOUND = 37,    /* implied bound cuts added */
  QRN_IINF_MIP_CUTS_ZERO_HALF = 38,        /* zero-half cuts added */
  QRN_IINF_MIP_CUTS_LIFT_PROJECT = 39,     /* lift-and-project cuts added */
  QRN_IINF_MIP_CUTS_CONIC = 40,            /* conic outer-approximation cuts added */
  QRN_IINF_MIP_CUTS_TOTAL = 41,            /* cuts added in all */
  QRN_IINF_MIP_CUTS_ACTIVE = 42,           /* cuts in the final relaxation */
  QRN_IINF_MIP_PROBING_FIXED = 43,         /* variables fixed by probing */
  QRN_IINF_MIP_PROBING_IMPLICATIONS = 44,  /* implications found by probing */
  QRN_IINF_MIP_CLIQUES = 45,               /* cliques in the conflict graph */
  QRN_IINF_MIP_INT_VARS = 46,              /* integer variables after presolve */
  QRN_IINF_MIP_BIN_VARS = 47,              /* binary variables after presolve */
  QRN_IINF_MIP_SYMMETRY_GENERATORS = 48,   /* generators of the symmetry group found */
  QRN_IINF_PRESOLVE_PASSES = 49,           /* presolve passes */
  QRN_IINF_PRESOLVE_REMOVED_CONS = 50,     /* constraints removed by presolve */
  QRN_IINF_PRESOLVE_REMOVED_VARS = 51,     /* variables removed by presolve */
  QRN_IINF_PRESOLVE_REMOVED_CONES = 52,    /* cones removed by presolve */
  QRN_IINF_PRESOLVE_FIXED_VARS = 53,       /* variables fixed by presolve */
  QRN_IINF_PRESOLVE_TIGHTENED_BOUNDS = 54, /* bounds tightened by presolve */
  QRN_IINF_PRESOLVE_SUBSTITUTIONS = 55,    /* variables substituted out by presolve */
  QRN_IINF_PRESOLVE_DUPLICATE_ROWS = 56,   /* duplicate constraints removed */
  QRN_IINF_PRESOLVE_DUPLICATE_COLS = 57,   /* duplicate variables merged */
  QRN_IINF_PRESOLVE_SINGLETON_ROWS = 58,   /* singleton constraints turned into bounds */
  QRN_IINF_PRESOLVE_SINGLETON_COLS = 59,   /* singleton columns eliminated */
  QRN_IINF_PRESOLVE_DOMINATED_COLS = 60,   /* dominated variables fixed */
  QRN_IINF_PRESOLVE_COEF_TIGHTENED = 61,   /* coefficients tightened */
  QRN_IINF_PRESOLVE_DUAL_REDUCTIONS = 62,  /* reductions made from dual arguments */
  QRN_IINF_PRESOLVE_NUM_CON = 63,          /* constraints after presolve */
  QRN_IINF_PRESOLVE_NUM_VAR = 64,          /* variables after presolve */
  QRN_IINF_PRESOLVE_NUM_CONE = 65,         /* cones after presolve */
  QRN_IINF_PROB_TYPE = 66,                 /* [-1] qrn_probtype_e value of the problem optimized last */
  QRN_IINF_PROB_NUM_CON = 67,              /* constraints of the problem optimized last */
  QRN_IINF_PROB_NUM_VAR = 68,              /* variables */
  QRN_IINF_PROB_NUM_INT_VAR = 69,          /* integer variables */
  QRN_IINF_PROB_NUM_BIN_VAR = 70,          /* integer variables with bounds 0 and 1 */
  QRN_IINF_PROB_NUM_FREE_VAR = 71,         /* free variables */
  QRN_IINF_PROB_NUM_FIXED_VAR = 72,        /* fixed variables */
  QRN_IINF_PROB_NUM_RANGED_VAR = 73,       /* variables with two finite bounds */
  QRN_IINF_PROB_NUM_EQ_CON = 74,           /* equality constraints */
  QRN_IINF_PROB_NUM_RANGED_CON = 75,       /* ranged constraints */
  QRN_IINF_PROB_NUM_FREE_CON = 76,         /* free constraints */
  QRN_IINF_PROB_NUM_EMPTY_ROWS = 77,       /* constraints without matrix entries */
  QRN_IINF_PROB_NUM_EMPTY_COLS = 78,       /* variables without matrix entries */
  QRN_IINF_PROB_MAX_ROW_NNZ = 79,          /* most matrix entries in one constraint */
  QRN_IINF_PROB_MAX_COL_NNZ = 80,          /* most matrix entries in one variable */
  QRN_IINF_PROB_NUM_QCON = 81,             /* constraints with quadratic terms */
  QRN_IINF_PROB_NUM_QOBJ_VAR = 82,         /* variables in quadratic objective terms */
  QRN_IINF_PROB_NUM_CONE = 83,             /* cones */
  QRN_IINF_PROB_NUM_QUAD_CONE = 84,        /* quadratic cones */
  QRN_IINF_PROB_NUM_RQUAD_CONE = 85,       /* rotated quadratic cones */
  QRN_IINF_PROB_NUM_CONE_MEMBERS = 86,     /* variables that are cone members */
  QRN_IINF_PROB_MAX_CONE_SIZE = 87,        /* members of the largest cone */
  QRN_IINF_INTERIOR_SOL_STATUS = 88,       /* [-1] status (interior solution) */
  QRN_IINF_BASIC_SOL_STATUS = 89,          /* [-1] status (basic solution) */
  QRN_IINF_INTEGER_SOL_STATUS = 90,        /* [-1] status (integer solution) */
  QRN_IINF_ALGORITHM_USED = 91,            /* [-1] qrn_algorithm_e value of the algorithm used */
  QRN_IINF_THREADS_USED = 92,              /* threads used by the last optimization */
  QRN_IINF_TERMINATION_CODE = 93,          /* [-1] termination code of the last optimization */
  QRN_IINF_OPT_RESPONSE = 94,              /* response code of the last optimization */
  QRN_IINF_OPT_CALLS = 95,                 /* optimizations run on the task */
  QRN_IINF_CALLBACKS = 96,                 /* callback calls in the last optimization */
  QRN_IINF_STOPPED_BY_CALLBACK = 97,       /* 1 when the callback asked to stop */
  QRN_IINF_LOG_LINES = 98,                 /* lines written to the log stream by the last optimization */
  QRN_IINF_WARNINGS = 99,                  /* warnings issued by the last optimization */
  QRN_IINF_DATA_NUM_LARGE_COEF = 100,      /* coefficients above QRN_DPAR_DATA_LARGE_COEF */
  QRN_IINF_DATA_NUM_SMALL_COEF = 101,      /* non-zero coefficients below QRN_DPAR_DATA_SMALL_COEF */
  QRN_IINF_CONVEXITY_CHECKED = 102,        /* 1 when the quadratic terms were checked for convexity */
  QRN_IINF_NONCONVEX_CON = 103,            /* [-1] first non-convex constraint (-2: the objective) */
  QRN_IINF_READ_NUM_LINES = 104,           /* lines of the last problem read */
  QRN_IINF_READ_NUM_WARNINGS = 105,        /* warnings of the last problem read */
  QRN_IINF_READ_NUM_CON = 106,             /* constraints of the last problem read */
  QRN_IINF_READ_NUM_VAR = 107,             /* variables of the last problem read */
  QRN_IINF_READ_FORMAT = 108,              /* [-1] qrn_dataformat_e value of the last problem read */
  QRN_IINF_SENSITIVITY_ITEMS = 109,        /* items analysed by the last sensitivity analysis */
  QRN_IINF_REPAIR_RELAXED_CONS = 110,      /* constraints relaxed by the last feasibility repair */
  QRN_IINF_REPAIR_RELAXED_VARS = 111,      /* variable bounds relaxed by the last feasibility repair */
  QRN_IINF_REMOTE_ATTEMPTS = 112,          /* connection attempts to a remote server */
  QRN_IINF_REMOTE_SOLVES = 113,            /* optimizations run remotely */
  QRN_IINF_BASIS_NUM_SLACKS = 114,         /* slack variables in the final basis */
  QRN_IINF_BASIS_NUM_STRUCT = 115,         /* structural variables in the final basis */
  QRN_IINF_BASIS_SOLVES = 116,             /* solves with the basis since the last optimization */
};
enum qrn_liinfitem_e {
  QRN_LIINF_IPM_FACTOR_NNZ = 0,         /* non-zeros of the interior-point factor */
  QRN_LIINF_IPM_FACTOR_FLOPS = 1,       /* floating-point operations of one interior-point factor */
  QRN_LIINF_SPX_FACTOR_NNZ = 2,         /* non-zeros of the last basis factor */
  QRN_LIINF_MIP_NODES = 3,              /* nodes processed */
  QRN_LIINF_MIP_PRUNED_NODES = 4,       /* nodes pruned by their bound */
  QRN_LIINF_MIP_INFEASIBLE_NODES = 5,   /* nodes found infeasible */
  QRN_LIINF_MIP_LP_SOLVES = 6,          /* relaxations solved */
  QRN_LIINF_MIP_SIMPLEX_ITER = 7,       /* simplex iterations in the mixed-integer search */
  QRN_LIINF_MIP_IPM_ITER = 8,           /* interior-point iterations in the mixed-integer search */
  QRN_LIINF_MIP_STRONG_BRANCH_ITER = 9, /* iterations spent in strong branching */
  QRN_LIINF_PROB_NUM_ANZ = 10,          /* matrix non-zeros of the problem optimized last */
  QRN_LIINF_PROB_NUM_QOBJ_NZ = 11,      /* quadratic objective terms (lower triangle) */
  QRN_LIINF_PROB_NUM_QCON_NZ = 12,      /* quadratic constraint terms (lower triangles) */
  QRN_LIINF_PRESOLVE_ANZ = 13,          /* matrix non-zeros after presolve */
  QRN_LIINF_MEM_PEAK_BYTES = 14,        /* peak bytes used by the last optimization */
  QRN_LIINF_MEM_CURRENT_BYTES = 15,     /* bytes held by the task after the last optimization */
  QRN_LIINF_READ_BYTES = 16,            /* bytes of the last problem read */
  QRN_LIINF_WRITE_BYTES = 17,           /* bytes of the last problem write */
  QRN_LIINF_REMOTE_BYTES_SENT = 18,     /* bytes sent to a remote server */
  QRN_LIINF_OPT_START_USEC = 19,        /* [-1] start of the last run, Unix time in microseconds */
  QRN_LIINF_OPT_END_USEC = 20,          /* [-1] end of the last run, Unix time in microseconds */
};
/* QRN_INFORMATION_END */

/* ======================================================================= */
/* Environments and tasks                                                  */
/* ======================================================================= */

/* Makes an environment; dbgfile (may be null) names a file that receives a copy
   of everything written to the environment's streams. */
QRN_API qrn_rescode QRN_CALL QRN_makeenv(qrn_env_t *env, const char *dbgfile);
/* Deletes *env and sets it to null; a null *env is accepted and does nothing. */
QRN_API qrn_rescode QRN_CALL QRN_deleteenv(qrn_env_t *env);
QRN_API qrn_rescode QRN_CALL QRN_linkfunctoenvstream(qrn_env_t env, qrn_int32 whichstream,
                                                     void *handle, qrn_stream_fn func);
/* Lets tasks be deleted after their environment; tasks then keep it alive. */
QRN_API qrn_rescode QRN_CALL QRN_enablegarcolenv(qrn_env_t env);

/* Makes an empty task in env, or in the library's global environment for null. */
QRN_API qrn_rescode QRN_CALL QRN_makeemptytask(qrn_env_t env, qrn_task_t *task);
/* Makes a deep copy of task (problem data, names, parameters; not the streams
   or the callback). */
QRN_API qrn_rescode QRN_CALL QRN_clonetask(qrn_task_t task, qrn_task_t *clone);
/* Deletes *task and sets it to null; a null *task is accepted. */
QRN_API qrn_rescode QRN_CALL QRN_deletetask(qrn_task_t *task);
QRN_API qrn_rescode QRN_CALL QRN_linkfunctotaskstream(qrn_task_t task, qrn_int32 whichstream,
                                                      void *handle, qrn_stream_fn func);
QRN_API qrn_rescode QRN_CALL QRN_putcallbackfunc(qrn_task_t task, qrn_callback_fn func,
                                                 void *handle);
/* Code and message of the task's last failing call. *lastmsglen (if not null)
   receives the message length without the NUL; lastmsg (if not null) receives
   at most sizelastmsg - 1 bytes and a NUL. */
QRN_API qrn_rescode QRN_CALL QRN_getlasterror(qrn_task_t task, qrn_rescode *lastrescode,
                                              qrn_int32 sizelastmsg, qrn_int32 *lastmsglen,
                                              char *lastmsg);

/* Writes the task's problem in format (qrn_dataformat_e, not EXTENSION)
   through func, gzip-compressed when compress is QRN_COMPRESS_GZIP. */
QRN_API qrn_rescode QRN_CALL QRN_writedatahandle(qrn_task_t task, qrn_write_fn func, void *handle,
                                                 qrn_int32 format, qrn_int32 compress);

/* ======================================================================= */
/* Constraints, variables and the constraint matrix                        */
/* ======================================================================= */

QRN_API qrn_rescode QRN_CALL QRN_appendcons(qrn_task_t task, qrn_int32 num);
QRN_API qrn_rescode QRN_CALL QRN_appendvars(qrn_task_t task, qrn_int32 num);
/* Removes the listed constraints (variables); later ones move down. */
QRN_API qrn_rescode QRN_CALL QRN_removecons(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset);
QRN_API qrn_rescode QRN_CALL QRN_removevars(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset);
QRN_API qrn_rescode QRN_CALL QRN_getnumcon(qrn_task_t task, qrn_int32 *numcon);
QRN_API qrn_rescode QRN_CALL QRN_getnumvar(qrn_task_t task, qrn_int32 *numvar);
/* Fails with QRN_RES_ERR_TOO_SMALL when the count does not fit in 32 bits. */
QRN_API qrn_rescode QRN_CALL QRN_getnumanz(qrn_task_t task, qrn_int32 *numanz);
QRN_API qrn_rescode QRN_CALL QRN_getnumanz64(qrn_task_t task, qrn_int64 *numanz);
/* Capacities: hints for storage; never below what the task holds. */
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumcon(qrn_task_t task, qrn_int32 *maxnumcon);
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumvar(qrn_task_t task, qrn_int32 *maxnumvar);
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumanz64(qrn_task_t task, qrn_int64 *maxnumanz);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumcon(qrn_task_t task, qrn_int32 maxnumcon);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumvar(qrn_task_t task, qrn_int32 maxnumvar);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumanz(qrn_task_t task, qrn_int64 maxnumanz);

QRN_API qrn_rescode QRN_CALL QRN_getacolnumnz(qrn_task_t task, qrn_int32 j, qrn_int32 *nzj);
QRN_API qrn_rescode QRN_CALL QRN_getarownumnz(qrn_task_t task, qrn_int32 i, qrn_int32 *nzi);
QRN_API qrn_rescode QRN_CALL QRN_getacolslicenumnz64(qrn_task_t task, qrn_int32 first,
                                                     qrn_int32 last, qrn_int64 *numnz);
QRN_API qrn_rescode QRN_CALL QRN_getarowslicenumnz64(qrn_task_t task, qrn_int32 first,
                                                     qrn_int32 last, qrn_int64 *numnz);
/* Non-zeros in rows [firsti, lasti) and columns [firstj, lastj). */
QRN_API qrn_rescode QRN_CALL QRN_getapiecenumnz(qrn_task_t task, qrn_int32 firsti, qrn_int32 lasti,
                                                qrn_int32 firstj, qrn_int32 lastj, qrn_int32 *numnz);

/* Entries with |value| <= the truncation tolerance (default 0) are not stored:
   writing such a value removes the entry. */
QRN_API qrn_rescode QRN_CALL QRN_getatruncatetol(qrn_task_t task, qrn_real *tolzero);
QRN_API qrn_rescode QRN_CALL QRN_putatruncatetol(qrn_task_t task, qrn_real tolzero);
QRN_API qrn_rescode QRN_CALL QRN_getaij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real *aij);
QRN_API qrn_rescode QRN_CALL QRN_putaij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real aij);

/* Reads column j (row i) in increasing index order; writes its count to *nzj. */
QRN_API qrn_rescode QRN_CALL QRN_getacol(qrn_task_t task, qrn_int32 j, qrn_int32 *nzj,
                                         qrn_int32 *subj, qrn_real *valj);
QRN_API qrn_rescode QRN_CALL QRN_getarow(qrn_task_t task, qrn_int32 i, qrn_int32 *nzi,
                                         qrn_int32 *subi, qrn_real *vali);
/* Column (row) slice in compressed form: entries of column first+k are at
   positions ptrb[k] .. ptre[k]-1 of sub/val. maxnumnz is the capacity of sub/val. */
QRN_API qrn_rescode QRN_CALL QRN_getacolslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                qrn_int64 maxnumnz, qrn_int64 *ptrb,
                                                qrn_int64 *ptre, qrn_int32 *sub, qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_getarowslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                qrn_int64 maxnumnz, qrn_int64 *ptrb,
                                                qrn_int64 *ptre, qrn_int32 *sub, qrn_real *val);
/* Whole matrix as triplets, column by column. */
QRN_API qrn_rescode QRN_CALL QRN_getatrip(qrn_task_t task, qrn_int64 maxnumnz, qrn_int32 *subi,
                                          qrn_int32 *subj, qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_getarowslicetrip(qrn_task_t task, qrn_int32 first,
                                                  qrn_int32 last, qrn_int64 maxnumnz,
                                                  qrn_int32 *subi, qrn_int32 *subj, qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_getacolslicetrip(qrn_task_t task, qrn_int32 first,
                                                  qrn_int32 last, qrn_int64 maxnumnz,
                                                  qrn_int32 *subi, qrn_int32 *subj, qrn_real *val);

/* Replaces column j (row i) by the given entries; indexes must not repeat. */
QRN_API qrn_rescode QRN_CALL QRN_putacol(qrn_task_t task, qrn_int32 j, qrn_int32 nzj,
                                         const qrn_int32 *subj, const qrn_real *valj);
QRN_API qrn_rescode QRN_CALL QRN_putarow(qrn_task_t task, qrn_int32 i, qrn_int32 nzi,
                                         const qrn_int32 *subi, const qrn_real *vali);
/* Sets entries (subi[k], subj[k]); a later duplicate overwrites an earlier one. */
QRN_API qrn_rescode QRN_CALL QRN_putaijlist64(qrn_task_t task, qrn_int64 num,
                                              const qrn_int32 *subi, const qrn_int32 *subj,
                                              const qrn_real *valij);
/* Replaces rows (columns) sub[k] by asub/aval[ptrb[k] .. ptre[k]-1]. */
QRN_API qrn_rescode QRN_CALL QRN_putarowlist64(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                               const qrn_int64 *ptrb, const qrn_int64 *ptre,
                                               const qrn_int32 *asub, const qrn_real *aval);
QRN_API qrn_rescode QRN_CALL QRN_putacollist64(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                               const qrn_int64 *ptrb, const qrn_int64 *ptre,
                                               const qrn_int32 *asub, const qrn_real *aval);
QRN_API qrn_rescode QRN_CALL QRN_putarowslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre,
                                                const qrn_int32 *asub, const qrn_real *aval);
QRN_API qrn_rescode QRN_CALL QRN_putacolslice64(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre,
                                                const qrn_int32 *asub, const qrn_real *aval);

/* States a whole linear problem: sizes the task to numcon x numvar (replacing
   its previous linear data), sets c, cfix, the columns of A (aptrb/aptre into
   asub/aval) and the bounds. Null bound arrays leave the bounds free. */
QRN_API qrn_rescode QRN_CALL QRN_inputdata64(qrn_task_t task, qrn_int32 maxnumcon, qrn_int32 maxnumvar,
                                             qrn_int32 numcon, qrn_int32 numvar, const qrn_real *c,
                                             qrn_real cfix, const qrn_int64 *aptrb,
                                             const qrn_int64 *aptre, const qrn_int32 *asub,
                                             const qrn_real *aval, const qrn_int32 *bkc,
                                             const qrn_real *blc, const qrn_real *buc,
                                             const qrn_int32 *bkx, const qrn_real *blx,
                                             const qrn_real *bux);

/* ======================================================================= */
/* Bounds, objective and variable types                                    */
/* ======================================================================= */

/* Bounds. A side that the key does not bound reads back as -inf/+inf (IEEE
   infinities); a value of magnitude >= QRN_INFINITY counts as infinite, and a
   side that the key bounds must be finite (QRN_RES_ERR_BOUND_INFINITE). NaN
   bounds are refused (QRN_RES_ERR_VALUE_NAN). lower > upper is accepted.

   chgconbound/chgvarbound change the lower (lower != 0) or upper side to
   value (finite != 0) or to infinity (finite == 0; value is then ignored) and
   set the key from the sides that are then finite: none FREE, lower only
   LOWER, upper only UPPER, both RANGED. Equal finite sides stay FIXED only
   when the key was FIXED; otherwise they make RANGED, never FIXED.
   Example: an infinite upper side on a RANGED item makes it LOWER. */
QRN_API qrn_rescode QRN_CALL QRN_chgconbound(qrn_task_t task, qrn_int32 i, qrn_int32 lower,
                                             qrn_int32 finite, qrn_real value);
QRN_API qrn_rescode QRN_CALL QRN_chgvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 lower,
                                             qrn_int32 finite, qrn_real value);
QRN_API qrn_rescode QRN_CALL QRN_putconbound(qrn_task_t task, qrn_int32 i, qrn_int32 bkc,
                                             qrn_real blc, qrn_real buc);
QRN_API qrn_rescode QRN_CALL QRN_putvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 bkx,
                                             qrn_real blx, qrn_real bux);
QRN_API qrn_rescode QRN_CALL QRN_getconbound(qrn_task_t task, qrn_int32 i, qrn_int32 *bk,
                                             qrn_real *bl, qrn_real *bu);
QRN_API qrn_rescode QRN_CALL QRN_getvarbound(qrn_task_t task, qrn_int32 j, qrn_int32 *bk,
                                             qrn_real *bl, qrn_real *bu);
QRN_API qrn_rescode QRN_CALL QRN_putconboundlistconst(qrn_task_t task, qrn_int32 num,
                                                      const qrn_int32 *sub, qrn_int32 bkc,
                                                      qrn_real blc, qrn_real buc);
QRN_API qrn_rescode QRN_CALL QRN_putvarboundlistconst(qrn_task_t task, qrn_int32 num,
                                                      const qrn_int32 *sub, qrn_int32 bkx,
                                                      qrn_real blx, qrn_real bux);
QRN_API qrn_rescode QRN_CALL QRN_putconboundsliceconst(qrn_task_t task, qrn_int32 first,
                                                       qrn_int32 last, qrn_int32 bkc,
                                                       qrn_real blc, qrn_real buc);
QRN_API qrn_rescode QRN_CALL QRN_putvarboundsliceconst(qrn_task_t task, qrn_int32 first,
                                                       qrn_int32 last, qrn_int32 bkx,
                                                       qrn_real blx, qrn_real bux);
QRN_API qrn_rescode QRN_CALL QRN_putconboundlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                 const qrn_int32 *bkc, const qrn_real *blc,
                                                 const qrn_real *buc);
QRN_API qrn_rescode QRN_CALL QRN_putvarboundlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *sub,
                                                 const qrn_int32 *bkx, const qrn_real *blx,
                                                 const qrn_real *bux);
/* List and slice writers: in the list writers an index may repeat (its last
   entry wins); a null bkc/blc/buc (bkx/blx/bux) array leaves that part of every
   listed item unchanged (in the list writers sub must be given). Every entry
   is checked before any bound changes. */
QRN_API qrn_rescode QRN_CALL QRN_putconboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  const qrn_int32 *bkc, const qrn_real *blc,
                                                  const qrn_real *buc);
QRN_API qrn_rescode QRN_CALL QRN_putvarboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  const qrn_int32 *bkx, const qrn_real *blx,
                                                  const qrn_real *bux);
QRN_API qrn_rescode QRN_CALL QRN_getconboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  qrn_int32 *bk, qrn_real *bl, qrn_real *bu);
QRN_API qrn_rescode QRN_CALL QRN_getvarboundslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                                  qrn_int32 *bk, qrn_real *bl, qrn_real *bu);

QRN_API qrn_rescode QRN_CALL QRN_getcj(qrn_task_t task, qrn_int32 j, qrn_real *cj);
QRN_API qrn_rescode QRN_CALL QRN_putcj(qrn_task_t task, qrn_int32 j, qrn_real cj);
QRN_API qrn_rescode QRN_CALL QRN_getcfix(qrn_task_t task, qrn_real *cfix);
QRN_API qrn_rescode QRN_CALL QRN_putcfix(qrn_task_t task, qrn_real cfix);
QRN_API qrn_rescode QRN_CALL QRN_getobjsense(qrn_task_t task, qrn_int32 *sense);
QRN_API qrn_rescode QRN_CALL QRN_putobjsense(qrn_task_t task, qrn_int32 sense);
/* Objective coefficients and the constant term must be finite
   (QRN_RES_ERR_VALUE_NAN); an unknown sense is QRN_RES_ERR_OBJ_SENSE.
   getc writes numvar coefficients. In the list forms an index may repeat. */
QRN_API qrn_rescode QRN_CALL QRN_getc(qrn_task_t task, qrn_real *c);
QRN_API qrn_rescode QRN_CALL QRN_getclist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                          qrn_real *c);
QRN_API qrn_rescode QRN_CALL QRN_getcslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                           qrn_real *c);
QRN_API qrn_rescode QRN_CALL QRN_putclist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                          const qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_putcslice(qrn_task_t task, qrn_int32 first, qrn_int32 last,
                                           const qrn_real *slice);

/* Variable types (qrn_vartype_e; others are QRN_RES_ERR_VAR_TYPE). New
   variables are continuous; getnumintvar counts the integer ones. */
QRN_API qrn_rescode QRN_CALL QRN_getnumintvar(qrn_task_t task, qrn_int32 *numintvar);
QRN_API qrn_rescode QRN_CALL QRN_getvartype(qrn_task_t task, qrn_int32 j, qrn_int32 *vartype);
QRN_API qrn_rescode QRN_CALL QRN_putvartype(qrn_task_t task, qrn_int32 j, qrn_int32 vartype);
QRN_API qrn_rescode QRN_CALL QRN_putvartypelist(qrn_task_t task, qrn_int32 num,
                                                const qrn_int32 *subj, const qrn_int32 *vartype);
QRN_API qrn_rescode QRN_CALL QRN_getvartypelist(qrn_task_t task, qrn_int32 num,
                                                const qrn_int32 *subj, qrn_int32 *vartype);

/* ======================================================================= */
/* Quadratic terms and cones                                               */
/* ======================================================================= */
/* Quadratic terms are triplets (i, j, q) of a symmetric matrix Q, the term
   being 1/2 x'Qx. Only the lower triangle is stored: every triplet must have
   j <= i (else QRN_RES_ERR_QUAD_UPPER); repeated (i, j) in one call are added.
   putqobj/putqconk replace all terms of the objective / constraint k.
   Values must be finite (QRN_RES_ERR_VALUE_NAN); a term whose value (or sum)
   is 0 is not stored. Removing a variable drops its terms.
   getqobj64/getqconk64 write the terms in increasing (i, j) order; a capacity
   below the number of terms is QRN_RES_ERR_TOO_SMALL and nothing is written.
   The capacity getmaxnumqnz64 reports is never below the terms held (all
   matrices together); putmaxnumqnz below them is QRN_RES_ERR_MAX_CAPACITY. */
QRN_API qrn_rescode QRN_CALL QRN_getnumqobjnz64(qrn_task_t task, qrn_int64 *numqonz);
QRN_API qrn_rescode QRN_CALL QRN_getnumqconknz64(qrn_task_t task, qrn_int32 k, qrn_int64 *numqcnz);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumqnz(qrn_task_t task, qrn_int64 maxnumqnz);
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumqnz64(qrn_task_t task, qrn_int64 *maxnumqnz);
QRN_API qrn_rescode QRN_CALL QRN_getqobjij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real *qoij);
/* getqobjij of (i, j) with j > i reads (j, i). putqobjij sets one lower-
   triangle coefficient; 0 removes it. */
QRN_API qrn_rescode QRN_CALL QRN_putqobjij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_real qoij);
QRN_API qrn_rescode QRN_CALL QRN_putqobj(qrn_task_t task, qrn_int32 numqonz, const qrn_int32 *qosubi,
                                         const qrn_int32 *qosubj, const qrn_real *qoval);
QRN_API qrn_rescode QRN_CALL QRN_putqconk(qrn_task_t task, qrn_int32 k, qrn_int32 numqcnz,
                                          const qrn_int32 *qcsubi, const qrn_int32 *qcsubj,
                                          const qrn_real *qcval);
/* Replaces the terms of every constraint named in qcsubk (triplet k belongs to
   constraint qcsubk[k]); constraints not named keep theirs. */
QRN_API qrn_rescode QRN_CALL QRN_putqcon(qrn_task_t task, qrn_int32 numqcnz, const qrn_int32 *qcsubk,
                                         const qrn_int32 *qcsubi, const qrn_int32 *qcsubj,
                                         const qrn_real *qcval);
QRN_API qrn_rescode QRN_CALL QRN_getqobj64(qrn_task_t task, qrn_int64 maxnumqonz, qrn_int64 *numqonz,
                                           qrn_int32 *qosubi, qrn_int32 *qosubj, qrn_real *qoval);
QRN_API qrn_rescode QRN_CALL QRN_getqconk64(qrn_task_t task, qrn_int32 k, qrn_int64 maxnumqcnz,
                                            qrn_int64 *numqcnz, qrn_int32 *qcsubi,
                                            qrn_int32 *qcsubj, qrn_real *qcval);

/* Cones over scalar variables (qrn_conetype_e). A variable may belong to at
   most one cone (QRN_RES_ERR_CONE_OVERLAP) and occur once in it
   (QRN_RES_ERR_CONE_REP_VAR). A QUAD cone needs at least 1 member, an RQUAD
   cone 2 (QRN_RES_ERR_CONE_SIZE). The parameter is stored as given; NaN is
   QRN_RES_ERR_CONE_PARAMETER. Members keep the order given. Removing a
   variable removes it from its cone. The capacity (getmaxnumcone) is never
   below the number of cones; putmaxnumcone below it is
   QRN_RES_ERR_MAX_CAPACITY. */
QRN_API qrn_rescode QRN_CALL QRN_getnumcone(qrn_task_t task, qrn_int32 *numcone);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumcone(qrn_task_t task, qrn_int32 maxnumcone);
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumcone(qrn_task_t task, qrn_int32 *maxnumcone);
QRN_API qrn_rescode QRN_CALL QRN_getnumconemem(qrn_task_t task, qrn_int32 k, qrn_int32 *nummem);
QRN_API qrn_rescode QRN_CALL QRN_appendcone(qrn_task_t task, qrn_int32 ct, qrn_real conepar,
                                            qrn_int32 nummem, const qrn_int32 *submem);
/* Appends a cone over variables j, j+1, ..., j+nummem-1. */
QRN_API qrn_rescode QRN_CALL QRN_appendconeseq(qrn_task_t task, qrn_int32 ct, qrn_real conepar,
                                               qrn_int32 nummem, qrn_int32 j);
/* Appends num cones over consecutive variables starting at j: cone k takes
   the nummem[k] variables that follow those of cone k - 1. */
QRN_API qrn_rescode QRN_CALL QRN_appendconesseq(qrn_task_t task, qrn_int32 num, const qrn_int32 *ct,
                                                const qrn_real *conepar, const qrn_int32 *nummem,
                                                qrn_int32 j);
/* Replaces cone k; its own members may be reused. */
QRN_API qrn_rescode QRN_CALL QRN_putcone(qrn_task_t task, qrn_int32 k, qrn_int32 ct, qrn_real conepar,
                                         qrn_int32 nummem, const qrn_int32 *submem);
QRN_API qrn_rescode QRN_CALL QRN_removecones(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset);
QRN_API qrn_rescode QRN_CALL QRN_getconeinfo(qrn_task_t task, qrn_int32 k, qrn_int32 *ct,
                                             qrn_real *conepar, qrn_int32 *nummem);
/* Writes nummem members into submem (when not null). */
QRN_API qrn_rescode QRN_CALL QRN_getcone(qrn_task_t task, qrn_int32 k, qrn_int32 *ct, qrn_real *conepar,
                                         qrn_int32 *nummem, qrn_int32 *submem);

/* ======================================================================= */
/* Information items and task-wide scalars                                 */
/* ======================================================================= */

/* Items of the last optimization (identifiers and initial values with
   QRN_INFORMATION_BEGIN above); a bad identifier is refused with
   QRN_RES_ERR_INF_INDEX. */
QRN_API qrn_rescode QRN_CALL QRN_getdouinf(qrn_task_t task, qrn_int32 whichdinf, qrn_real *dvalue);
QRN_API qrn_rescode QRN_CALL QRN_getintinf(qrn_task_t task, qrn_int32 whichiinf, qrn_int32 *ivalue);
QRN_API qrn_rescode QRN_CALL QRN_getlintinf(qrn_task_t task, qrn_int32 whichliinf, qrn_int64 *ivalue);
/* The problem type of the task's data (qrn_probtype_e): conic when it has
   cones, quadratic when it has quadratic objective or constraint terms, mixed
   when it has both. */
QRN_API qrn_rescode QRN_CALL QRN_getprobtype(qrn_task_t task, qrn_int32 *probtype);

/* ======================================================================= */
/* Names                                                                   */
/* ======================================================================= */
/* Names are UTF-8 texts (else QRN_RES_ERR_NAME_UTF8); "" means unnamed, as
   every item is until it gets a name. Within one kind of item (constraints,
   variables, cones) a name belongs to one item at most: giving it to a second
   one is refused with QRN_RES_ERR_NAME_DUPLICATE, so rename or unname the
   first before. Lookup by name takes constant time and follows renames and
   removals. */
QRN_API qrn_rescode QRN_CALL QRN_putconname(qrn_task_t task, qrn_int32 i, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_putvarname(qrn_task_t task, qrn_int32 j, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_putconename(qrn_task_t task, qrn_int32 k, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_putobjname(qrn_task_t task, const char *objname);
QRN_API qrn_rescode QRN_CALL QRN_puttaskname(qrn_task_t task, const char *taskname);
/* Lengths in bytes, without the NUL. */
QRN_API qrn_rescode QRN_CALL QRN_getconnamelen(qrn_task_t task, qrn_int32 i, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getvarnamelen(qrn_task_t task, qrn_int32 j, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getconenamelen(qrn_task_t task, qrn_int32 k, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getobjnamelen(qrn_task_t task, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_gettasknamelen(qrn_task_t task, qrn_int32 *len);
/* Write the name and a NUL into a buffer of sizename bytes; when that does not
   fit they write nothing and fail with QRN_RES_ERR_TOO_SMALL. A null buffer
   receives nothing. */
QRN_API qrn_rescode QRN_CALL QRN_getconname(qrn_task_t task, qrn_int32 i, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getvarname(qrn_task_t task, qrn_int32 j, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getconename(qrn_task_t task, qrn_int32 k, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getobjname(qrn_task_t task, qrn_int32 sizeobjname, char *objname);
QRN_API qrn_rescode QRN_CALL QRN_gettaskname(qrn_task_t task, qrn_int32 sizetaskname, char *taskname);
/* Lookup by name in constant time: *asgn is 1 when an item has the name and 0
   otherwise; *index is that item's index, or -1. A missing name ("" included)
   is not an error. */
QRN_API qrn_rescode QRN_CALL QRN_getconnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index);
QRN_API qrn_rescode QRN_CALL QRN_getvarnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index);
QRN_API qrn_rescode QRN_CALL QRN_getconenameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                  qrn_int32 *index);
/* Name generation. Item subj[k] (k < num) gets a name made from fmt and the
   index tuple (i0, i1, ...) of a position in the shape dims[0..ndims), the
   positions counted in row-major order (the last index runs fastest): position
   sp[k], or k when sp is null, in which case num must equal the number of
   positions (the product of dims). fmt holds exactly ndims "{}", which take i0,
   i1, ... in turn; "{{" and "}}" stand for single braces; any other brace is
   refused. An index is written in decimal, except on a named axis:
   namedaxisidxs lists the named dimensions, and names holds for each of them,
   in that order, dims[d] texts, text i standing for index i (so numnames is the
   sum of their dims).
   Example: fmt "x[{},{}]", dims {2, 3}, namedaxisidxs {0}, names {"a", "b"}
   name positions 0, 1, ... "x[a,0]", "x[a,1]", "x[a,2]", "x[b,0]", ...
   Refused, changing nothing: a bad format or count (QRN_RES_ERR_NAME_FORMAT),
   a position outside the shape (QRN_RES_ERR_NAME_POSITION), an item listed
   twice (QRN_RES_ERR_DUP_INDEX), a name that an item not being renamed holds
   (QRN_RES_ERR_NAME_DUPLICATE). */
QRN_API qrn_rescode QRN_CALL QRN_generatevarnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names);
QRN_API qrn_rescode QRN_CALL QRN_generateconnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names);
QRN_API qrn_rescode QRN_CALL QRN_generateconenames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subk,
                                                   const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                   const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                   const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                   const char *const *names);
/* Writes to stream whichstream (0..3) a short report of the names that are not
   of kind nametype (qrn_nametype_e): names longer than QRN_IPAR_NAME_LENGTH_WARN
   bytes and, for QRN_NAME_TYPE_TEXT, names with a blank or a control
   character. At most five names of each kind of item are listed. */
QRN_API qrn_rescode QRN_CALL QRN_analyzenames(qrn_task_t task, qrn_int32 whichstream, qrn_int32 nametype);

/* ======================================================================= */
/* Parameters                                                              */
/* ======================================================================= */

/* Identifiers, defaults and allowed values are listed with QRN_PARAMETERS_BEGIN
   above. A bad identifier is refused with QRN_RES_ERR_PARAM_INDEX, a value
   that is not allowed with QRN_RES_ERR_PARAM_VALUE (the parameter keeps its
   value). */
QRN_API qrn_rescode QRN_CALL QRN_putdouparam(qrn_task_t task, qrn_int32 param, qrn_real parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putintparam(qrn_task_t task, qrn_int32 param, qrn_int32 parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putstrparam(qrn_task_t task, qrn_int32 param, const char *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getdouparam(qrn_task_t task, qrn_int32 param, qrn_real *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getintparam(qrn_task_t task, qrn_int32 param, qrn_int32 *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getstrparamlen(qrn_task_t task, qrn_int32 param, qrn_int32 *len);
/* Writes at most maxlen - 1 bytes and a NUL, never part of a UTF-8 character;
   *len receives the bytes written without the NUL (0 for a null parvalue). */
QRN_API qrn_rescode QRN_CALL QRN_getstrparam(qrn_task_t task, qrn_int32 param, qrn_int32 maxlen,
                                             qrn_int32 *len, char *parvalue);
/* Number of parameters of kind partype (qrn_parametertype_e). */
QRN_API qrn_rescode QRN_CALL QRN_getnumparam(qrn_task_t task, qrn_int32 partype, qrn_int32 *numparam);
/* By name: an unknown name is refused with QRN_RES_ERR_PARAM_NAME, the name of
   a parameter of another kind with QRN_RES_ERR_PARAM_TYPE. */
QRN_API qrn_rescode QRN_CALL QRN_putnadouparam(qrn_task_t task, const char *paramname, qrn_real parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putnaintparam(qrn_task_t task, const char *paramname, qrn_int32 parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putnastrparam(qrn_task_t task, const char *paramname, const char *parvalue);
/* Sets a parameter of any kind from its value as text (see QRN_PARAMETERS_BEGIN):
   blanks around a number or constant name are ignored; a string value is taken
   as it is. */
QRN_API qrn_rescode QRN_CALL QRN_putparam(qrn_task_t task, const char *parname, const char *parvalue);
/* Identifier of the parameter of that name: QRN_RES_ERR_PARAM_NAME if there is
   none, QRN_RES_ERR_PARAM_TYPE if it is of another kind. */
QRN_API qrn_rescode QRN_CALL QRN_isdouparname(qrn_task_t task, const char *parname, qrn_int32 *param);
QRN_API qrn_rescode QRN_CALL QRN_isintparname(qrn_task_t task, const char *parname, qrn_int32 *param);
QRN_API qrn_rescode QRN_CALL QRN_isstrparname(qrn_task_t task, const char *parname, qrn_int32 *param);
/* Constants from their names, in full or without the prefix: "QRN_CONE_QUAD"
   or "QUAD", "QRN_SK_BASIS" or "BASIS"; letter case matters. Any other text is
   refused with QRN_RES_ERR_UNKNOWN_KEY. */
QRN_API qrn_rescode QRN_CALL QRN_strtoconetype(qrn_task_t task, const char *str, qrn_int32 *conetype);
QRN_API qrn_rescode QRN_CALL QRN_strtosk(qrn_task_t task, const char *str, qrn_int32 *sk);
/* Sets every parameter to its default. */
QRN_API qrn_rescode QRN_CALL QRN_setdefaults(qrn_task_t task);

/* ======================================================================= */
/* Files, strings and reports                                              */
/* ======================================================================= */
/* Reading a problem (readdata*, read*string, readtask) replaces the task's
   problem: sizes, matrix, bounds, objective, types, quadratic terms, cones and
   names. Parameters are kept unless the format carries them (JSON_TASK, TASK,
   and only with QRN_IPAR_INPUT_PARAMS on); solutions are cleared unless the
   format carries them. A reader that fails leaves the task exactly as it was;
   its message names the file (or "<string>"), the line and the column:
   "model.mps:12:5: ...". Files named *.gz are gzip files; readers also take
   gzip data under any name. Read codes: QRN_RES_ERR_READ_* (1900-1908),
   QRN_RES_ERR_GZIP, QRN_RES_ERR_FILE_OPEN, and the code of any data the task
   refuses.
   Writers refuse a task that the format would not carry in full, before
   writing anything, with the QRN_RES_ERR_WRITE_LOSES_* code naming what would
   be lost (names, quadratic terms, cones, bounds, integer types, numbers).
   With QRN_IPAR_OUTPUT_NAMES off, names are replaced on purpose by generated
   ones (QRN_SPAR_NAME_PREFIX_*, then the index) and never count as lost.
   Unnamed items get the same generated names in formats that need a name
   for every item (MPS, LP). Numbers are written in the shortest text that
   reads back to the same double (QRN_IPAR_OUTPUT_PRECISION below 17 rounds
   them on purpose). The information items QRN_*INF_READ_* and *_WRITE_* are
   set by every successful read and write. */
QRN_API qrn_rescode QRN_CALL QRN_writedata(qrn_task_t task, const char *filename);
/* Format and compression selectors: qrn_dataformat_e and qrn_compress_e. For
   reading, QRN_COMPRESS_NONE still accepts gzip data. */
QRN_API qrn_rescode QRN_CALL QRN_readdataformat(qrn_task_t task, const char *filename, qrn_int32 format,
                                                qrn_int32 compress);
/* Format from the file name (and QRN_IPAR_INPUT_FORMAT when that is not
   QRN_DATA_FORMAT_EXTENSION). */
QRN_API qrn_rescode QRN_CALL QRN_readdataautoformat(qrn_task_t task, const char *filename);
/* The binary task file (QRN_DATA_FORMAT_TASK) whatever the file's name;
   compressed when the name ends in .gz. */
QRN_API qrn_rescode QRN_CALL QRN_readtask(qrn_task_t task, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_writetask(qrn_task_t task, const char *filename);
/* A problem given as text in one of the text formats. */
QRN_API qrn_rescode QRN_CALL QRN_readopfstring(qrn_task_t task, const char *data);
QRN_API qrn_rescode QRN_CALL QRN_readlpstring(qrn_task_t task, const char *data);
QRN_API qrn_rescode QRN_CALL QRN_readjsonstring(qrn_task_t task, const char *data);
QRN_API qrn_rescode QRN_CALL QRN_readptfstring(qrn_task_t task, const char *data);
/* Any text format as a string (format: qrn_dataformat_e, not EXTENSION or TASK). */
QRN_API qrn_rescode QRN_CALL QRN_readdatastring(qrn_task_t task, const char *data, qrn_int32 format);

/* Parameter files: one "NAME VALUE" per line, NAME a parameter's full name
   (QRN_DPAR_OPT_TOL), VALUE as QRN_putparam reads it; a string value that is
   empty or has blanks at its ends is written in double quotes ("\"" and "\\"
   inside). '#' starts a comment; blank lines are ignored. The file is checked
   whole before any parameter changes: an unknown name is
   QRN_RES_ERR_PARAM_NAME, a bad value QRN_RES_ERR_PARAM_VALUE, a line that is
   not NAME VALUE QRN_RES_ERR_READ_SYNTAX, each with the line in the message.
   writeparamfile writes every parameter. */
QRN_API qrn_rescode QRN_CALL QRN_readparamfile(qrn_task_t task, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_writeparamfile(qrn_task_t task, const char *filename);

/* Solution files (docs/formats/solution.md). whichsol is a qrn_soltype_e
   (else QRN_RES_ERR_SOL_ITEM). writesolution writes one defined solution
   (QRN_RES_ERR_SOL_UNDEFINED otherwise) as text; readsolution reads such a text
   into whichsol, which becomes defined: its items must match the task's
   sizes (QRN_RES_ERR_SOL_SIZE), by name where the file has names.
   writesolutionfile/readsolutionfile write and read every defined solution in
   one text file; writejsonsol/readjsonsol the same as JSON. A failed read
   leaves the solutions as they were. */
QRN_API qrn_rescode QRN_CALL QRN_readsolution(qrn_task_t task, qrn_int32 whichsol, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_writesolution(qrn_task_t task, qrn_int32 whichsol, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_readsolutionfile(qrn_task_t task, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_writesolutionfile(qrn_task_t task, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_readjsonsol(qrn_task_t task, const char *filename);
QRN_API qrn_rescode QRN_CALL QRN_writejsonsol(qrn_task_t task, const char *filename);
/* Basis files (the MPS basis format: XU, XL, UL, LL lines) of the basic
   solution; compress is a qrn_compress_e. readbsolution makes the basic
   solution defined, with the keys read and each non-basic variable at its
   bound (basic ones 0), status unknown. */
QRN_API qrn_rescode QRN_CALL QRN_readbsolution(qrn_task_t task, const char *filename, qrn_int32 compress);
QRN_API qrn_rescode QRN_CALL QRN_writebsolution(qrn_task_t task, const char *filename, qrn_int32 compress);

/* Reports, written to stream whichstream (0..3, else QRN_RES_ERR_STREAM).
   readsummary: what the last successful read found (file, format, sizes,
   time). analyzeproblem: sizes, kinds of bounds, ranges of the coefficients of
   A, c, bounds and quadratic terms, and warnings about possible numerical
   trouble (very large or small magnitudes, wide ranges, empty rows and
   columns). solutionsummary: every defined solution (onesolutionsummary: the
   one whichsol names): statuses, objective values and largest violations.
   optimizersummary: the information items of the last optimization. */
QRN_API qrn_rescode QRN_CALL QRN_readsummary(qrn_task_t task, qrn_int32 whichstream);
QRN_API qrn_rescode QRN_CALL QRN_analyzeproblem(qrn_task_t task, qrn_int32 whichstream);
QRN_API qrn_rescode QRN_CALL QRN_solutionsummary(qrn_task_t task, qrn_int32 whichstream);
QRN_API qrn_rescode QRN_CALL QRN_onesolutionsummary(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol);
QRN_API qrn_rescode QRN_CALL QRN_optimizersummary(qrn_task_t task, qrn_int32 whichstream);

/* Copies everything written to the task's stream whichstream into filename as
   well: append != 0 appends to the file, append == 0 empties it first. An
   empty filename unlinks the stream's file. The file is closed when it is
   replaced or unlinked, or the task is deleted. */
QRN_API qrn_rescode QRN_CALL QRN_linkfiletotaskstream(qrn_task_t task, qrn_int32 whichstream,
                                                      const char *filename, qrn_int32 append);
/* Memory held by the task: *meminuse the bytes its containers hold now (an
   estimate from their capacities), *maxmemuse the largest such figure seen at
   any measurement (every read, write and call of these two functions).
   checkmemtask writes both, with file and line as given by the caller, to the
   message stream. */
QRN_API qrn_rescode QRN_CALL QRN_getmemusagetask(qrn_task_t task, qrn_int64 *meminuse, qrn_int64 *maxmemuse);
QRN_API qrn_rescode QRN_CALL QRN_checkmemtask(qrn_task_t task, const char *file, qrn_int32 line);

#ifdef __cplusplus
}
#endif

#endif /* QUARN_H */
