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
  X(QRN_RES_OK, 0, "No error occurred.")                                                                                \
  X(QRN_RES_WRN_NAME_MAX_LEN, 100, "A name is longer than the recommended maximum length.")                             \
  X(QRN_RES_WRN_NO_NAME, 101, "No item has the requested name.")                                                        \
  X(QRN_RES_ERR_NULL_ENV, 1000, "The environment handle is null.")                                                      \
  X(QRN_RES_ERR_NULL_TASK, 1001, "The task handle is null.")                                                            \
  X(QRN_RES_ERR_NULL_POINTER, 1002, "An array argument is null although its count is not zero.")                        \
  X(QRN_RES_ERR_SPACE, 1003, "The library could not allocate memory.")                                                  \
  X(QRN_RES_ERR_INTERNAL, 1004, "An internal error occurred in the library.")                                           \
  X(QRN_RES_ERR_ARGUMENT, 1005, "An argument has an invalid value.")                                                    \
  X(QRN_RES_ERR_TOO_SMALL, 1006, "An output capacity or buffer is too small for the data.")                             \
  X(QRN_RES_ERR_STREAM, 1007, "The stream number is not one of the four library streams.")                              \
  X(QRN_RES_ERR_FILE_OPEN, 1008, "A file could not be opened.")                                                         \
  X(QRN_RES_ERR_WRITE, 1009, "Writing data failed or the receiver took fewer bytes than given.")                        \
  X(QRN_RES_ERR_DATA_FORMAT, 1010, "The data format is not known or not supported here.")                               \
  X(QRN_RES_ERR_COMPRESSION, 1011, "The compression type is not known or not supported here.")                          \
  X(QRN_RES_ERR_STOPPED, 1012, "The callback function asked the library to stop.")                                      \
  X(QRN_RES_ERR_INDEX_CON, 1100, "A constraint index is out of range.")                                                 \
  X(QRN_RES_ERR_INDEX_VAR, 1101, "A variable index is out of range.")                                                   \
  X(QRN_RES_ERR_INDEX_CONE, 1102, "A cone index is out of range.")                                                      \
  X(QRN_RES_ERR_SLICE, 1103, "A slice has first greater than last or lies outside the items.")                          \
  X(QRN_RES_ERR_DUP_INDEX, 1104, "An index occurs more than once in a list that must not repeat.")                      \
  X(QRN_RES_ERR_NEGATIVE_COUNT, 1105, "A count or capacity is negative.")                                               \
  X(QRN_RES_ERR_PTR_RANGE, 1106, "A pointer pair has ptrb greater than ptre or a negative entry.")                      \
  X(QRN_RES_ERR_MAX_CAPACITY, 1107, "A capacity is smaller than what the task already holds.")                          \
  X(QRN_RES_ERR_VALUE_NAN, 1108, "A value is NaN or infinite where a finite value is required.")                        \
  X(QRN_RES_ERR_BOUND_KEY, 1200, "A bound key is not one of the library's bound keys.")                                 \
  X(QRN_RES_ERR_BOUND_INFINITE, 1201, "A finite bound is required by the bound key but is infinite.")                   \
  X(QRN_RES_ERR_OBJ_SENSE, 1202, "The objective sense is not one of the library's senses.")                             \
  X(QRN_RES_ERR_VAR_TYPE, 1203, "A variable type is not one of the library's variable types.")                          \
  X(QRN_RES_ERR_QUAD_UPPER, 1300, "A quadratic term lies in the upper triangle (column > row).")                        \
  X(QRN_RES_ERR_CONE_TYPE, 1301, "A cone type is not one of the library's cone types.")                                 \
  X(QRN_RES_ERR_CONE_SIZE, 1302, "A cone has too few members for its type.")                                            \
  X(QRN_RES_ERR_CONE_OVERLAP, 1303, "A variable is a member of more than one cone.")                                    \
  X(QRN_RES_ERR_CONE_REP_VAR, 1304, "A variable occurs twice among the members of one cone.")                           \
  X(QRN_RES_ERR_CONE_PARAMETER, 1305, "A cone parameter is outside its allowed range.")                                 \
  X(QRN_RES_ERR_NAME_FORMAT, 1400, "A name format text is invalid.")                                                    \
  X(QRN_RES_ERR_NAME_UTF8, 1401, "A name is not valid UTF-8.")                                                          \
  X(QRN_RES_ERR_NAME_DUPLICATE, 1402, "Another item of the same kind already has the name.")                            \
  X(QRN_RES_ERR_NAME_POSITION, 1403, "A position lies outside the shape of generated names.")                           \
  X(QRN_RES_ERR_PARAM_INDEX, 1500, "A parameter identifier is out of range.")                                           \
  X(QRN_RES_ERR_PARAM_NAME, 1501, "No parameter has the given name.")                                                   \
  X(QRN_RES_ERR_PARAM_VALUE, 1502, "A parameter value is outside the parameter's allowed range.")                       \
  X(QRN_RES_ERR_PARAM_TYPE, 1503, "The parameter has another kind than the call expects.")                              \
  X(QRN_RES_ERR_INF_INDEX, 1600, "An information item identifier is out of range.")                                     \
  X(QRN_RES_ERR_UNKNOWN_KEY, 1601, "The text names no constant of the requested kind.")                                 \
  X(QRN_RES_ERR_INDEX_AFE, 1700, "An affine expression index is out of range.")                                         \
  X(QRN_RES_ERR_INDEX_DOMAIN, 1701, "A domain index is out of range.")                                                  \
  X(QRN_RES_ERR_INDEX_ACC, 1702, "An affine conic constraint index is out of range.")                                   \
  X(QRN_RES_ERR_INDEX_DJC, 1703, "A disjunctive constraint index is out of range.")                                     \
  X(QRN_RES_ERR_INDEX_BARVAR, 1704, "A semidefinite variable index is out of range.")                                   \
  X(QRN_RES_ERR_INDEX_SYMMAT, 1705, "A symmetric matrix index is out of range.")                                        \
  X(QRN_RES_ERR_DOMAIN_DIMENSION, 1706, "The dimension is not allowed for the domain type.")                            \
  X(QRN_RES_ERR_DOMAIN_POWER_WEIGHTS, 1707, "Power cone weights are not positive and finite, or too many.")             \
  X(QRN_RES_ERR_DOMAIN_NOT_POWER, 1708, "The domain is not a power cone.")                                              \
  X(QRN_RES_ERR_ACC_SIZE, 1709, "The number of affine expressions differs from the domains' dimensions.")               \
  X(QRN_RES_ERR_DJC_TERMS, 1710, "The term sizes of a disjunctive constraint do not partition its domains.")            \
  X(QRN_RES_ERR_SYMMAT_UPPER, 1711, "A symmetric matrix entry lies in the upper triangle (column > row).")              \
  X(QRN_RES_ERR_SYMMAT_RANGE, 1712, "A symmetric matrix entry lies outside the matrix dimension.")                      \
  X(QRN_RES_ERR_SYMMAT_REPEATED, 1713, "A symmetric matrix entry is given twice.")                                      \
  X(QRN_RES_ERR_SYMMAT_DIM, 1714, "A matrix dimension differs from that of its semidefinite variable.")                 \
  X(QRN_RES_ERR_BARVAR_DIM, 1715, "A semidefinite variable dimension is not positive.")                                 \
  X(QRN_RES_ERR_BAR_POSITION, 1716, "The position names no non-zero semidefinite coefficient.")                         \
  X(QRN_RES_ERR_EIGEN, 1719, "An eigenvalue computation did not converge.")                                             \
  X(QRN_RES_ERR_READ_SYNTAX, 1900, "The text does not follow its format.")                                              \
  X(QRN_RES_ERR_READ_EOF, 1901, "The file or text ends before its data is complete.")                                   \
  X(QRN_RES_ERR_READ_NUMBER, 1902, "A number in the text is malformed, NaN or out of range.")                           \
  X(QRN_RES_ERR_READ_NAME_UNKNOWN, 1903, "The text refers to a name that it does not define.")                          \
  X(QRN_RES_ERR_READ_NAME_DUP, 1904, "The text defines one name twice or states one entry twice.")                      \
  X(QRN_RES_ERR_READ_SECTION, 1905, "The text has an unknown, repeated or misplaced section.")                          \
  X(QRN_RES_ERR_READ_UNSUPPORTED, 1906, "The text holds a kind of data this library cannot hold.")                      \
  X(QRN_RES_ERR_READ_VERSION, 1907, "The data is not of the format or of an unknown version.")                          \
  X(QRN_RES_ERR_READ_INDEX, 1908, "An index or count in the text is out of range.")                                     \
  X(QRN_RES_ERR_GZIP, 1909, "Compressed data is corrupt or could not be compressed.")                                   \
  X(QRN_RES_ERR_WRITE_LOSES_NAMES, 1920, "The format cannot hold some of the task's names.")                            \
  X(QRN_RES_ERR_WRITE_LOSES_QUADRATIC, 1921, "The format cannot hold the task's quadratic terms.")                      \
  X(QRN_RES_ERR_WRITE_LOSES_CONES, 1922, "The format cannot hold the task's cones.")                                    \
  X(QRN_RES_ERR_WRITE_LOSES_BOUNDS, 1923, "The format cannot state some of the task's bounds exactly.")                 \
  X(QRN_RES_ERR_WRITE_LOSES_INTEGER, 1924, "The format cannot hold integer variables.")                                 \
  X(QRN_RES_ERR_WRITE_LOSES_NUMBERS, 1925, "The format cannot state some number exactly.")                              \
  X(QRN_RES_ERR_SOL_SIZE, 1942, "The solution read does not match the task's sizes.")                                   \
  X(QRN_RES_ERR_WRITE_LOSES_AFFINE_CONIC, 1950, "The format cannot hold the task's affine expressions or ACCs.")        \
  X(QRN_RES_ERR_WRITE_LOSES_DISJUNCTIVE, 1951, "The format cannot hold disjunctive constraints.")                       \
  X(QRN_RES_ERR_WRITE_LOSES_SEMIDEFINITE, 1952, "The format cannot hold the task's semidefinite data.")                 \
  X(QRN_RES_ERR_WRITE_LOSES_DOMAINS, 1953, "The format cannot hold some of the task's domains.")                        \
  X(QRN_RES_ERR_SOL_WHICH, 2000, "The solution identifier is not one of QRN_SOL_ITR, QRN_SOL_BAS, QRN_SOL_ITG.")        \
  X(QRN_RES_ERR_SOL_UNDEFINED, 2001, "The requested solution is not defined.")                                          \
  X(QRN_RES_ERR_SOL_ITEM, 2002, "The solution item is not one of the library's solution items.")                        \
  X(QRN_RES_ERR_SOL_KEY, 2003, "A status key is not one of the library's status keys.")                                 \
  X(QRN_RES_TRM_MAX_ITERATIONS, 2050, "The optimizer stopped at its iteration limit.")                                  \
  X(QRN_RES_TRM_MAX_TIME, 2051, "The optimizer stopped at its time limit.")                                             \
  X(QRN_RES_TRM_MIP_GAP, 2052, "The mixed-integer search stopped: the gap tolerance was met.")                          \
  X(QRN_RES_TRM_MAX_NODES, 2053, "The mixed-integer search stopped at its node limit.")                                 \
  X(QRN_RES_TRM_MAX_SOLUTIONS, 2054, "The mixed-integer search stopped at its solution limit.")                         \
  X(QRN_RES_TRM_USER_CALLBACK, 2055, "The optimizer stopped because the callback asked it to.")                         \
  X(QRN_RES_TRM_NUMERICAL_PROBLEM, 2056, "The optimizer stopped after numerical trouble.")                              \
  X(QRN_RES_ERR_OPT_QCON, 2100, "Quadratic constraints are not supported by the optimizers.")                           \
  X(QRN_RES_ERR_OPT_CONES, 2101, "Cones are not supported by the optimizers.")                                          \
  X(QRN_RES_ERR_OPT_MIQP, 2102, "Integer variables with a quadratic objective are not supported.")                      \
  X(QRN_RES_ERR_OPT_COMBINATION, 2103, "The chosen algorithm cannot solve this kind of problem.")                       \
  X(QRN_RES_ERR_OPT_SOLVER, 2104, "The underlying solver failed.")                                                      \
  X(QRN_RES_ERR_OPT_NONCONVEX, 2105, "The quadratic objective is not convex (concave when maximizing).")                \
  X(QRN_RES_ERR_NO_BASIS, 2110, "The task has no basic solution with a complete basis.")                                \
  X(QRN_RES_ERR_BASIS_SINGULAR, 2111, "The basis matrix is singular.")                                                  \
  X(QRN_RES_ERR_BASIS_NOT_INIT, 2112, "No basis factorization: call QRN_initbasissolve first.")                         \
  X(QRN_RES_ERR_MARK, 2113, "A mark is not QRN_MARK_LO or QRN_MARK_UP.")                                                \
  X(QRN_RES_ERR_NO_CERTIFICATE, 2115, "The solution holds no primal infeasibility certificate.")                        \
  X(QRN_RES_ERR_NOT_INFEASIBLE, 2116, "The problem is feasible: there is no infeasible subproblem.")                    \
  X(QRN_RES_ERR_REPAIR_WEIGHT, 2117, "A repair weight is NaN.")                                                         \
  X(QRN_RES_ERR_REPAIR_FAILED, 2118, "The relaxed problem could not be made feasible.")                                 \
  X(QRN_RES_ERR_OPT_DJC, 2150, "Disjunctive constraints are not supported by the conic optimizer.")                     \
  X(QRN_RES_ERR_OPT_QCON_NONCONVEX, 2151, "A quadratic constraint is not convex.")                                      \
  X(QRN_RES_ERR_OPT_INT_CONIC, 2152, "Integer variables with conic data or quadratic constraints are not supported.")   \
  X(QRN_RES_ERR_LA_DIMENSION, 2200, "A matrix or vector dimension is negative or too large for the routine.")           \
  X(QRN_RES_ERR_LA_TRANSPOSE, 2201, "A transpose flag is neither QRN_TRANSPOSE_NO nor QRN_TRANSPOSE_YES.")              \
  X(QRN_RES_ERR_LA_UPLO, 2202, "A triangle selector is neither QRN_UPLO_LO nor QRN_UPLO_UP.")                           \
  X(QRN_RES_ERR_LA_NOT_POSDEF, 2203, "The matrix is not positive definite.")                                            \
  X(QRN_RES_ERR_LA_NO_CONVERGENCE, 2204, "The eigenvalue computation did not converge.")                                \
  X(QRN_RES_ERR_LA_ROW_INDEX, 2205, "A row index of a sparse matrix lies outside 0..n-1.")                              \
  X(QRN_RES_ERR_LA_NOT_LOWER, 2206, "A sparse matrix has an entry where its lower triangular layout allows none.")      \
  X(QRN_RES_ERR_LA_SINGULAR, 2207, "A triangular factor has a zero or missing diagonal entry.")                         \
  X(QRN_RES_ERR_LA_ORDERING, 2208, "The ordering is not one of the QRN_CHOLESKY_ORDER_ values.")                        \
  X(QRN_RES_ERR_LA_REGULARIZATION, 2209, "The regularization or its tolerance is not allowed.")                         \
  X(QRN_RES_ERR_UNKNOWN_RESCODE, 2210, "The value is not a response code of the library.")                              \
  X(QRN_RES_ERR_BATCH_NUM_THREADS, 2300, "The number of batch threads is negative.")                                    \
  X(QRN_RES_ERR_BATCH_TIME, 2301, "The batch time limit is NaN.")                                                       \
  X(QRN_RES_ERR_BATCH_DUP_TASK, 2302, "A task occurs more than once in the batch.")                                     \
  X(QRN_RES_ERR_BATCH_THREAD_START, 2303, "No worker thread of the batch could be started.")                            \
  X(QRN_RES_ERR_BATCH_NOT_STARTED, 2304, "The task was not optimized: the batch had stopped before its turn.")          \
  X(QRN_RES_TRM_BATCH_RACE, 2305, "The optimizer stopped because another task of the batch finished first.")            \
  X(QRN_RES_ERR_REMOTE_ADDRESS, 2320, "The server address is not HOST:PORT or http://HOST:PORT.")                       \
  X(QRN_RES_ERR_REMOTE_CONNECT, 2321, "No connection to the optimization server could be made.")                        \
  X(QRN_RES_ERR_REMOTE_TIMEOUT, 2322, "The optimization server did not answer in time.")                                \
  X(QRN_RES_ERR_REMOTE_LOST, 2323, "The connection to the optimization server broke off.")                              \
  X(QRN_RES_ERR_REMOTE_PROTOCOL, 2324, "The server's answer is garbled or not of the optimization protocol.")           \
  X(QRN_RES_ERR_REMOTE_AUTH, 2325, "The optimization server refused the access token.")                                 \
  X(QRN_RES_ERR_REMOTE_JOB_UNKNOWN, 2326, "The optimization server holds no job with this token.")                      \
  X(QRN_RES_ERR_REMOTE_REFUSED, 2327, "The optimization server refused the request as malformed.")                      \
  X(QRN_RES_ERR_REMOTE_TOO_LARGE, 2328, "The task is larger than the optimization server accepts.")                     \
  X(QRN_RES_ERR_REMOTE_BUSY, 2329, "The optimization server holds too many jobs or is shutting down.")                  \
  X(QRN_RES_ERR_REMOTE_SERVER, 2330, "The optimization server failed with an internal error.")                          \
  X(QRN_RES_ERR_REMOTE_TOKEN, 2331, "The job token is not one an optimization server issues.")

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
  QRN_CALLBACK_END_WRITE = 4,
  /* The optimizer (QRN_optimizetrm and the analyses that optimize): BEGIN and
     END enclose every run; each phase has its own pair; ITERATION codes come at
     most every QRN_DPAR_CALLBACK_INTERVAL seconds. */
  QRN_CALLBACK_BEGIN_SIMPLEX = 20,
  QRN_CALLBACK_SIMPLEX_ITERATION = 21,
  QRN_CALLBACK_END_SIMPLEX = 22,
  QRN_CALLBACK_BEGIN_BARRIER = 23,
  QRN_CALLBACK_BARRIER_ITERATION = 24,
  QRN_CALLBACK_END_BARRIER = 25,
  QRN_CALLBACK_BEGIN_CROSSOVER = 26,
  QRN_CALLBACK_END_CROSSOVER = 27,
  QRN_CALLBACK_BEGIN_MIP = 28,
  QRN_CALLBACK_MIP_NODE = 29,         /* a processed node (at most every interval) */
  QRN_CALLBACK_NEW_INT_SOLUTION = 30, /* a better integer solution was found */
  QRN_CALLBACK_END_MIP = 31,
  QRN_CALLBACK_BEGIN_REPAIR = 32,
  QRN_CALLBACK_END_REPAIR = 33
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

/* ---- solution status keys (QRN_strtosk) ------------------------------------
 * One key per constraint (skc), variable (skx) and cone (skn) of a solution,
 * saying where the item stands: */
enum qrn_stakey_e {
  QRN_SK_UNKNOWN = 0,     /* nothing known (new items; entries a writer defined) */
  QRN_SK_BASIS = 1,       /* basic: in the basis of a basic solution */
  QRN_SK_SUPER_BASIC = 2, /* non-basic strictly between its bounds (free items included) */
  QRN_SK_AT_LOWER = 3,    /* at its lower bound */
  QRN_SK_AT_UPPER = 4,    /* at its upper bound */
  QRN_SK_FIXED = 5,       /* at the common value of a fixed item's bounds */
  QRN_SK_INFEASIBLE = 6   /* outside its bounds */
};
#define QRN_SK_COUNT 7

/* ---- problem types (QRN_getprobtype) -------------------------------------- */
enum qrn_probtype_e {
  QRN_PROBTYPE_LINEAR = 0,    /* linear objective and constraints */
  QRN_PROBTYPE_QUADRATIC = 1, /* quadratic objective or constraint terms */
  QRN_PROBTYPE_CONIC = 2,     /* conic data: a cone, an affine conic or disjunctive constraint,
                                 or a semidefinite variable */
  QRN_PROBTYPE_MIXED = 3      /* quadratic terms and conic data together */
};

/* ---- solutions -------------------------------------------------------------
 * A task keeps one solution per identifier (whichsol). The interior solution
 * comes from an interior-point run, the basic solution from a simplex run or
 * crossover, the integer solution from the mixed-integer search (it has no
 * dual values: its dual vectors hold zeros unless a writer put others).
 * Any other whichsol is refused with QRN_RES_ERR_SOL_WHICH. The meaning of a
 * solution's vectors and of the quantities computed from it is given with
 * the solution functions ("Solutions" below). */
enum qrn_soltype_e {
  QRN_SOL_ITR = 0, /* interior solution */
  QRN_SOL_BAS = 1, /* basic solution */
  QRN_SOL_ITG = 2  /* integer solution */
};
#define QRN_SOL_COUNT 3

/* What is known about the problem when a solution is stored. */
enum qrn_prosta_e {
  QRN_PRO_STA_UNKNOWN = 0,               /* nothing known (also: a writer changed the solution) */
  QRN_PRO_STA_PRIM_AND_DUAL_FEAS = 1,    /* both the problem and its dual are feasible */
  QRN_PRO_STA_PRIM_FEAS = 2,             /* the problem is feasible */
  QRN_PRO_STA_DUAL_FEAS = 3,             /* the dual problem is feasible */
  QRN_PRO_STA_PRIM_INFEAS = 4,           /* infeasible: the solution holds a primal infeasibility certificate */
  QRN_PRO_STA_DUAL_INFEAS = 5,           /* dual infeasible (unbounded if feasible): the solution holds a ray */
  QRN_PRO_STA_PRIM_AND_DUAL_INFEAS = 6,  /* neither the problem nor its dual is feasible */
  QRN_PRO_STA_ILL_POSED = 7,             /* feasibility changes under arbitrarily small perturbations */
  QRN_PRO_STA_PRIM_INFEAS_OR_UNBOUNDED = 8 /* infeasible or unbounded, not told apart (mixed-integer) */
};

/* What a solution is. */
enum qrn_solsta_e {
  QRN_SOL_STA_UNKNOWN = 0,         /* nothing known (stopped early, or given by a writer) */
  QRN_SOL_STA_OPTIMAL = 1,         /* primal and dual feasible with a zero gap, within tolerances */
  QRN_SOL_STA_PRIM_FEAS = 2,       /* the primal part is feasible */
  QRN_SOL_STA_DUAL_FEAS = 3,       /* the dual part is feasible */
  QRN_SOL_STA_PRIM_AND_DUAL_FEAS = 4, /* both parts feasible, gap not closed */
  QRN_SOL_STA_PRIM_INFEAS_CER = 5, /* y, slc, suc, slx, sux, snx form a Farkas certificate */
  QRN_SOL_STA_DUAL_INFEAS_CER = 6, /* xx, xc form a primal ray of improving objective */
  QRN_SOL_STA_PRIM_ILLPOSED_CER = 7, /* the dual vectors certify primal ill-posedness */
  QRN_SOL_STA_DUAL_ILLPOSED_CER = 8, /* the primal vectors certify dual ill-posedness */
  QRN_SOL_STA_INTEGER_OPTIMAL = 9  /* integer solution optimal within the gap tolerances */
};

/* Solution items of QRN_getsolutionslice: one vector of a solution. */
enum qrn_solitem_e {
  QRN_SOL_ITEM_XC = 0,  /* constraint activities, numcon entries */
  QRN_SOL_ITEM_XX = 1,  /* variable values, numvar entries */
  QRN_SOL_ITEM_Y = 2,   /* constraint duals, numcon */
  QRN_SOL_ITEM_SLC = 3, /* duals of constraint lower bounds, numcon */
  QRN_SOL_ITEM_SUC = 4, /* duals of constraint upper bounds, numcon */
  QRN_SOL_ITEM_SLX = 5, /* duals of variable lower bounds, numvar */
  QRN_SOL_ITEM_SUX = 6, /* duals of variable upper bounds, numvar */
  QRN_SOL_ITEM_SNX = 7  /* duals of cone memberships, numvar */
};
#define QRN_SOL_ITEM_COUNT 8

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
/* AUTO picks by problem type (see QRN_optimizetrm); MIXED_INT runs the
   mixed-integer optimizer even on a problem without integer variables. */
enum qrn_algorithm_e { QRN_ALGORITHM_AUTO = 0, QRN_ALGORITHM_IPM = 1,
  QRN_ALGORITHM_PRIMAL_SIMPLEX = 2, QRN_ALGORITHM_DUAL_SIMPLEX = 3, QRN_ALGORITHM_ANY_SIMPLEX = 4,
  QRN_ALGORITHM_MIXED_INT = 5 };
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

/* Cost of reading and writing A. The matrix is stored by column; the counts
   (getnumanz64, getacolnumnz, getacolslicenumnz64) and a column (getacol,
   getacolslice64, getacolslicetrip, getatrip, getaij) are read in time
   proportional to the answer. Rows, and the count of entries of each row, are
   derived from the columns: writers that change few entries keep them up to
   date, and a writer that changes many (more than an eighth of the non-zeros,
   or inputdata64) drops them; the next row count (getarownumnz,
   getarowslicenumnz64) or row read (getarow, getarowslice64,
   getarowslicetrip) rebuilds what it needs once, in time proportional to the
   size of A, which amortizes over the bulk write that dropped it. Replacing
   rows (putarow, putarowslice64, putarowlist64) needs the row counts, and the
   row-wise index when those rows hold entries.
   The rule holds the other way round for rows: a row writer that changes many
   entries (putarowslice64, putarowlist64, putarow of a long row) stores the
   rows as they come, in the row-wise index, in time proportional to its
   input, when the rows it writes hold all of A's entries or when the row-wise
   index is at hand or those rows hold entries (otherwise it writes the
   columns directly). Rows and row counts are then read at once; the next
   access that needs the columns (a column, column count or entry read, any
   write of columns or single entries, removing constraints or variables,
   getacolslice64 as the optimizers and file writers use it) first rebuilds
   them from the rows, once, in time proportional to the size of A, which
   amortizes over the bulk write; both orientations are kept after that.
   Concurrent readers are safe: the rebuild happens once, under a lock. Every
   writer checks its whole input before it changes anything: a failing call
   leaves the task as it was. */

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
/* Capacities: hints only, never an order to allocate (a hint of 2^31-1 costs
   nothing); storage grows as items and non-zeros are added. A capacity is
   never below what the task holds: a lower one is QRN_RES_ERR_MAX_CAPACITY,
   a negative one QRN_RES_ERR_NEGATIVE_COUNT. */
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
   conic data (cones, affine conic or disjunctive constraints, semidefinite
   variables), quadratic when it has quadratic objective or constraint terms,
   mixed when it has both. */
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
/* Solutions                                                               */
/* ======================================================================= */
/* The vectors of a solution (whichsol, qrn_soltype_e):
     skc, xc, y, slc, suc  one entry per constraint   (numcon)
     skx, xx, slx, sux, snx  one entry per variable   (numvar)
     skn                   one entry per cone         (numcone)
   xx are the variable values and xc the constraint activities,
   xc_i = sum_j a_ij xx_j + 1/2 xx'Q_i xx. The dual values follow the
   Lagrangian of the problem
     minimize or maximize  c'x + cfix + 1/2 x'Qx
     subject to  lc <= Ax + 1/2 (x'Q_i x)_i <= uc,  lx <= x <= ux,  x in cones,
   with y = slc - suc and the stationarity condition (both senses)
     c + Qx - A'y - sum_i y_i Q_i x - slx + sux - snx = 0.
   Dual feasibility: for minimization slc, suc, slx, sux >= 0 and snx in the
   dual cone of each cone (the scalar cones are self-dual); for maximization
   the same with the signs reversed (<= 0, -snx in the dual cone). A dual
   value of an infinite bound must be 0, and snx is 0 outside the cones.
   A primal infeasibility certificate (QRN_SOL_STA_PRIM_INFEAS_CER) satisfies
   the same with c, Q and cfix taken as 0 and a positive dual objective; a
   dual infeasibility certificate (QRN_SOL_STA_DUAL_INFEAS_CER) is a ray
   whose constraints hold with every finite bound taken as 0 and with
   c'x < 0 (minimization) or > 0 (maximization).

   Defined solutions. A solution is defined once the optimizer or a writer
   stored it (QRN_solutiondef); QRN_deletesolution makes it undefined. Every
   reader of an undefined solution is refused with QRN_RES_ERR_SOL_UNDEFINED.
   A writer (QRN_putsolution, QRN_putxc, QRN_putxcslice, QRN_putskc,
   QRN_putconsolutioni, QRN_putsolutionyi and the others) first defines an
   undefined solution with every key QRN_SK_UNKNOWN and every value 0, then
   stores what it is given. Every writer sets the solution's problem and
   solution statuses to QRN_PRO_STA_UNKNOWN and QRN_SOL_STA_UNKNOWN: the
   library cannot vouch for values it did not compute. Keys must be
   qrn_stakey_e values (QRN_RES_ERR_SOL_KEY) and values must not be NaN
   (QRN_RES_ERR_VALUE_NAN); everything is checked before anything changes.
   In QRN_putsolution a null array leaves that vector as it is.

   Problem changes. A stored solution describes the problem as it was when it
   was stored. Appending constraints, variables or cones keeps every defined
   solution, extended with keys QRN_SK_UNKNOWN and values 0 for the new items;
   removing constraints, variables or cones drops their entries and renumbers
   the rest. Appending or removing constraints or variables, and removing
   cones, set the solution's statuses to unknown (the vectors are kept, e.g.
   as a starting point). Other changes (coefficients, bounds, objective, new
   cones) leave the statuses untouched until the next optimization. Whatever is computed from
   a solution (objective values, violations, norms, summaries, reduced costs)
   always uses the task's current data.

   Objective values: primal c'xx + cfix + 1/2 xx'Q xx; dual (the Lagrangian
   at the solution, using stationarity)
     cfix + sum_i (slc_i lc_i - suc_i uc_i) + sum_j (slx_j lx_j - sux_j ux_j)
          - 1/2 xx'Q xx + 1/2 sum_i y_i xx'Q_i xx,
   where terms of infinite bounds are left out. For a certificate, the
   homogeneous values: primal c'xx of a ray, dual sum of the bound terms of a
   Farkas certificate. */

/* Whole vectors (getters write numcon, numvar or numcone entries). */
QRN_API qrn_rescode QRN_CALL QRN_getskc(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *skc);
QRN_API qrn_rescode QRN_CALL QRN_getskx(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *skx);
QRN_API qrn_rescode QRN_CALL QRN_getskn(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *skn);
QRN_API qrn_rescode QRN_CALL QRN_getxc(qrn_task_t task, qrn_int32 whichsol, qrn_real *xc);
QRN_API qrn_rescode QRN_CALL QRN_getxx(qrn_task_t task, qrn_int32 whichsol, qrn_real *xx);
QRN_API qrn_rescode QRN_CALL QRN_gety(qrn_task_t task, qrn_int32 whichsol, qrn_real *y);
QRN_API qrn_rescode QRN_CALL QRN_getslc(qrn_task_t task, qrn_int32 whichsol, qrn_real *slc);
QRN_API qrn_rescode QRN_CALL QRN_getsuc(qrn_task_t task, qrn_int32 whichsol, qrn_real *suc);
QRN_API qrn_rescode QRN_CALL QRN_getslx(qrn_task_t task, qrn_int32 whichsol, qrn_real *slx);
QRN_API qrn_rescode QRN_CALL QRN_getsux(qrn_task_t task, qrn_int32 whichsol, qrn_real *sux);
QRN_API qrn_rescode QRN_CALL QRN_getsnx(qrn_task_t task, qrn_int32 whichsol, qrn_real *snx);
QRN_API qrn_rescode QRN_CALL QRN_putskc(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skc);
QRN_API qrn_rescode QRN_CALL QRN_putskx(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skx);
QRN_API qrn_rescode QRN_CALL QRN_putxc(qrn_task_t task, qrn_int32 whichsol, const qrn_real *xc);
QRN_API qrn_rescode QRN_CALL QRN_putxx(qrn_task_t task, qrn_int32 whichsol, const qrn_real *xx);
QRN_API qrn_rescode QRN_CALL QRN_puty(qrn_task_t task, qrn_int32 whichsol, const qrn_real *y);
QRN_API qrn_rescode QRN_CALL QRN_putslc(qrn_task_t task, qrn_int32 whichsol, const qrn_real *slc);
QRN_API qrn_rescode QRN_CALL QRN_putsuc(qrn_task_t task, qrn_int32 whichsol, const qrn_real *suc);
QRN_API qrn_rescode QRN_CALL QRN_putslx(qrn_task_t task, qrn_int32 whichsol, const qrn_real *slx);
QRN_API qrn_rescode QRN_CALL QRN_putsux(qrn_task_t task, qrn_int32 whichsol, const qrn_real *sux);
QRN_API qrn_rescode QRN_CALL QRN_putsnx(qrn_task_t task, qrn_int32 whichsol, const qrn_real *snx);

/* Slices [first, last) of constraints (skc, xc, y, slc, suc) or variables
   (skx, xx, slx, sux, snx); a slice outside the items is QRN_RES_ERR_SLICE. */
QRN_API qrn_rescode QRN_CALL QRN_getskcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_int32 *skc);
QRN_API qrn_rescode QRN_CALL QRN_getskxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_int32 *skx);
QRN_API qrn_rescode QRN_CALL QRN_getxcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                            qrn_int32 last, qrn_real *xc);
QRN_API qrn_rescode QRN_CALL QRN_getxxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                            qrn_int32 last, qrn_real *xx);
QRN_API qrn_rescode QRN_CALL QRN_getyslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                           qrn_int32 last, qrn_real *y);
QRN_API qrn_rescode QRN_CALL QRN_getslcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_real *slc);
QRN_API qrn_rescode QRN_CALL QRN_getsucslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_real *suc);
QRN_API qrn_rescode QRN_CALL QRN_getslxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_real *slx);
QRN_API qrn_rescode QRN_CALL QRN_getsuxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_real *sux);
QRN_API qrn_rescode QRN_CALL QRN_getsnxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, qrn_real *snx);
QRN_API qrn_rescode QRN_CALL QRN_putskcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_int32 *skc);
QRN_API qrn_rescode QRN_CALL QRN_putskxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_int32 *skx);
QRN_API qrn_rescode QRN_CALL QRN_putxcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                            qrn_int32 last, const qrn_real *xc);
QRN_API qrn_rescode QRN_CALL QRN_putxxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                            qrn_int32 last, const qrn_real *xx);
QRN_API qrn_rescode QRN_CALL QRN_putyslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                           qrn_int32 last, const qrn_real *y);
QRN_API qrn_rescode QRN_CALL QRN_putslcslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_real *slc);
QRN_API qrn_rescode QRN_CALL QRN_putsucslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_real *suc);
QRN_API qrn_rescode QRN_CALL QRN_putslxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_real *slx);
QRN_API qrn_rescode QRN_CALL QRN_putsuxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_real *sux);
QRN_API qrn_rescode QRN_CALL QRN_putsnxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                             qrn_int32 last, const qrn_real *snx);
/* One item's vector [first, last) (qrn_solitem_e; other values are
   QRN_RES_ERR_SOL_ITEM). */
QRN_API qrn_rescode QRN_CALL QRN_getsolutionslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 solitem,
                                                  qrn_int32 first, qrn_int32 last, qrn_real *values);

/* Whole solutions: the statuses (either output may be null) and the eleven
   vectors in the order above; null arrays are skipped (getter) or left as
   they are (putsolution). */
QRN_API qrn_rescode QRN_CALL QRN_getsolution(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta,
                                             qrn_int32 *solsta, qrn_int32 *skc, qrn_int32 *skx,
                                             qrn_int32 *skn, qrn_real *xc, qrn_real *xx, qrn_real *y,
                                             qrn_real *slc, qrn_real *suc, qrn_real *slx, qrn_real *sux,
                                             qrn_real *snx);
QRN_API qrn_rescode QRN_CALL QRN_putsolution(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skc,
                                             const qrn_int32 *skx, const qrn_int32 *skn,
                                             const qrn_real *xc, const qrn_real *xx, const qrn_real *y,
                                             const qrn_real *slc, const qrn_real *suc,
                                             const qrn_real *slx, const qrn_real *sux,
                                             const qrn_real *snx);
/* Constraint i: skc, xc, slc, suc, and y = sl - su. Variable j: skx, xx, slx,
   sux, snx. putsolutionyi sets y_i alone. */
QRN_API qrn_rescode QRN_CALL QRN_putconsolutioni(qrn_task_t task, qrn_int32 i, qrn_int32 whichsol,
                                                 qrn_int32 sk, qrn_real x, qrn_real sl, qrn_real su);
QRN_API qrn_rescode QRN_CALL QRN_putvarsolutionj(qrn_task_t task, qrn_int32 j, qrn_int32 whichsol,
                                                 qrn_int32 sk, qrn_real x, qrn_real sl, qrn_real su,
                                                 qrn_real sn);
QRN_API qrn_rescode QRN_CALL QRN_putsolutionyi(qrn_task_t task, qrn_int32 i, qrn_int32 whichsol,
                                               qrn_real y);

/* Status and objective values (see above); undefined: QRN_RES_ERR_SOL_UNDEFINED. */
QRN_API qrn_rescode QRN_CALL QRN_getprosta(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta);
QRN_API qrn_rescode QRN_CALL QRN_getsolsta(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *solsta);
QRN_API qrn_rescode QRN_CALL QRN_getprimalobj(qrn_task_t task, qrn_int32 whichsol, qrn_real *primalobj);
QRN_API qrn_rescode QRN_CALL QRN_getdualobj(qrn_task_t task, qrn_int32 whichsol, qrn_real *dualobj);
/* *isdef is 1 when the solution is defined, else 0 (never an error for that). */
QRN_API qrn_rescode QRN_CALL QRN_solutiondef(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *isdef);
/* Makes the solution undefined; deleting an undefined one does nothing. */
QRN_API qrn_rescode QRN_CALL QRN_deletesolution(qrn_task_t task, qrn_int32 whichsol);
/* Reduced costs of variables [first, last):
   c_j + (Qx)_j - (A'y)_j - sum_i y_i (Q_i x)_j, which at an optimum equals
   slx_j - sux_j + snx_j. */
QRN_API qrn_rescode QRN_CALL QRN_getreducedcosts(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                                 qrn_int32 last, qrn_real *redcosts);

/* Violations, one per listed index (>= 0, 0 when satisfied exactly; an index
   out of range is refused with the item's index code). With lc, uc, lx, ux
   the bounds (infinite when the key does not bound a side) and s = +1 for
   minimization, -1 for maximization:
   pviolcon  i: max(0, lc_i - xc_i, xc_i - uc_i, |xc_i - (a_i'xx + 1/2 xx'Q_i xx)|)
   pviolvar  j: max(0, lx_j - xx_j, xx_j - ux_j)
   pviolcones k: Euclidean distance of the cone's members (xx) to the cone
   dviolcon  i: max(|y_i - (slc_i - suc_i)|, -s slc_i, -s suc_i, 0), and
                |slc_i| (|suc_i|) when lc_i (uc_i) is infinite
   dviolvar  j: max(|stationarity residual of j|, -s slx_j, -s sux_j, 0), and
                |slx_j| (|sux_j|) when lx_j (ux_j) is infinite, |snx_j| when
                j belongs to no cone
   dviolcones k: distance of s times the members' snx to the (self-)dual cone
   For certificates the homogeneous problem is used (see above). */
QRN_API qrn_rescode QRN_CALL QRN_getpviolcon(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getpviolvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getpviolcones(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                               const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getdviolcon(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getdviolvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                             const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getdviolcones(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                               const qrn_int32 *sub, qrn_real *viol);

/* Norms: the largest magnitude of an entry (0 for an empty vector).
   Primal: xc, xx, barx. Dual: y, slc, suc, slx, sux, snx, bars. */
QRN_API qrn_rescode QRN_CALL QRN_getprimalsolutionnorms(qrn_task_t task, qrn_int32 whichsol,
                                                        qrn_real *nrmxc, qrn_real *nrmxx,
                                                        qrn_real *nrmbarx);
QRN_API qrn_rescode QRN_CALL QRN_getdualsolutionnorms(qrn_task_t task, qrn_int32 whichsol, qrn_real *nrmy,
                                                      qrn_real *nrmslc, qrn_real *nrmsuc,
                                                      qrn_real *nrmslx, qrn_real *nrmsux,
                                                      qrn_real *nrmsnx, qrn_real *nrmbars);
/* Summary of a solution, each violation the largest over all items:
   pobj      primal objective value
   pviolcon  largest pviolcon      pviolvar   largest pviolvar
   pviolbarvar  largest violation of semidefinite variables (0 without them)
   pviolcone largest pviolcones
   pviolitg  largest distance of an integer variable's xx to an integer
   dobj      dual objective value
   dviolcon  largest dviolcon      dviolvar   largest dviolvar
   dviolbarvar  largest dual violation of semidefinite variables (0 without)
   dviolcone largest dviolcones */
QRN_API qrn_rescode QRN_CALL QRN_getsolutioninfo(qrn_task_t task, qrn_int32 whichsol, qrn_real *pobj,
                                                 qrn_real *pviolcon, qrn_real *pviolvar,
                                                 qrn_real *pviolbarvar, qrn_real *pviolcone,
                                                 qrn_real *pviolitg, qrn_real *dobj, qrn_real *dviolcon,
                                                 qrn_real *dviolvar, qrn_real *dviolbarvar,
                                                 qrn_real *dviolcone);
/* Stores the summary of the solution in the information items of its kind:
   QRN_DINF_{INTERIOR,BASIC,INTEGER}_PRIMAL_OBJ, _DUAL_OBJ, _PRIMAL_CON_VIOL
   (pviolcon), _PRIMAL_BOUND_VIOL (pviolvar), _PRIMAL_CONE_VIOL (pviolcone),
   _DUAL_CON_VIOL (dviolvar: the dual's constraints are the stationarity rows),
   _DUAL_BOUND_VIOL (dviolcon), _DUAL_CONE_VIOL (dviolcone), _X_NORM, _Y_NORM,
   QRN_DINF_INTEGER_INT_VIOL (pviolitg) and QRN_IINF_{...}_SOL_STATUS, as far
   as the kind has them. */
QRN_API qrn_rescode QRN_CALL QRN_updatesolutioninfo(qrn_task_t task, qrn_int32 whichsol);
/* Writes a readable analysis of the solution to stream whichstream (0..3):
   statuses, objective values and gap, the largest violation of each kind
   with the item it occurs at, and the norms. */
QRN_API qrn_rescode QRN_CALL QRN_analyzesolution(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol);

/* ======================================================================= */
/* Environment services: linear algebra, code descriptions, version,       */
/* banner and stream files                                                 */
/* ======================================================================= */
/* These functions need an environment, not a task (a null env is
   QRN_RES_ERR_NULL_ENV); a failing call writes its message to the
   environment's error stream. QRN_getcodedesc and QRN_getversion need
   neither.

   Dense matrices are stored by columns: entry (i, j) of an m x n matrix is
   a[i + j*m], and every one of the m*n entries is present (no leading
   dimension other than the row count). Vectors are contiguous. A negative
   dimension is QRN_RES_ERR_LA_DIMENSION; an array may be null only when it
   holds no entries (else QRN_RES_ERR_NULL_POINTER). With beta = 0 the
   previous contents of y or c are not read (NaN there does not spread). The
   dense routines run OpenBLAS and LAPACK; the library sets OpenBLAS to one
   thread when it is loaded (a process may change that with
   openblas_set_num_threads). */
enum qrn_transpose_e {
  QRN_TRANSPOSE_NO = 0, /* op(A) = A */
  QRN_TRANSPOSE_YES = 1 /* op(A) = A' */
};
/* Which triangle of a symmetric matrix is read or written; the other one is
   neither read nor changed. */
enum qrn_uplo_e {
  QRN_UPLO_LO = 0, /* entries (i, j) with i >= j */
  QRN_UPLO_UP = 1  /* entries (i, j) with i <= j */
};

/* y = alpha x + y, for vectors of n entries. */
QRN_API qrn_rescode QRN_CALL QRN_axpy(qrn_env_t env, qrn_int32 n, qrn_real alpha, const qrn_real *x,
                                      qrn_real *y);
/* *xty = x'y (0 for n = 0); xty may be null. */
QRN_API qrn_rescode QRN_CALL QRN_dot(qrn_env_t env, qrn_int32 n, const qrn_real *x, const qrn_real *y,
                                     qrn_real *xty);
/* y = alpha op(A) x + beta y, A of m x n. x has n entries and y m, or, with
   transa = QRN_TRANSPOSE_YES, x has m and y n. */
QRN_API qrn_rescode QRN_CALL QRN_gemv(qrn_env_t env, qrn_int32 transa, qrn_int32 m, qrn_int32 n,
                                      qrn_real alpha, const qrn_real *a, const qrn_real *x, qrn_real beta,
                                      qrn_real *y);
/* C = alpha op(A) op(B) + beta C, C of m x n, op(A) of m x k, op(B) of k x n.
   A is stored as m x k, or as k x m when transa = QRN_TRANSPOSE_YES; B as
   k x n, or n x k when transb = QRN_TRANSPOSE_YES. */
QRN_API qrn_rescode QRN_CALL QRN_gemm(qrn_env_t env, qrn_int32 transa, qrn_int32 transb, qrn_int32 m,
                                      qrn_int32 n, qrn_int32 k, qrn_real alpha, const qrn_real *a,
                                      const qrn_real *b, qrn_real beta, qrn_real *c);
/* C = alpha A A' + beta C with A of n x k (trans = QRN_TRANSPOSE_NO), or
   C = alpha A' A + beta C with A of k x n (QRN_TRANSPOSE_YES); C is n x n and
   only its uplo triangle is read and updated. */
QRN_API qrn_rescode QRN_CALL QRN_syrk(qrn_env_t env, qrn_int32 uplo, qrn_int32 trans, qrn_int32 n,
                                      qrn_int32 k, qrn_real alpha, const qrn_real *a, qrn_real beta,
                                      qrn_real *c);
/* Cholesky factor of the symmetric n x n matrix A, read from its uplo
   triangle and written over it: A = L L' (QRN_UPLO_LO, L lower) or A = U'U
   (QRN_UPLO_UP, U upper). The other triangle is not touched. A matrix that is
   not positive definite is QRN_RES_ERR_LA_NOT_POSDEF (the message names the
   first leading minor that is not), and a NaN in the triangle
   QRN_RES_ERR_VALUE_NAN; after QRN_RES_ERR_LA_NOT_POSDEF the triangle is
   partly overwritten. */
QRN_API qrn_rescode QRN_CALL QRN_potrf(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, qrn_real *a);
/* Eigenvalues of the symmetric n x n matrix A (its uplo triangle), in
   ascending order, into w (n entries). A is not changed. Failure:
   QRN_RES_ERR_LA_NO_CONVERGENCE, QRN_RES_ERR_VALUE_NAN for a NaN in the
   triangle. */
QRN_API qrn_rescode QRN_CALL QRN_syeig(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, const qrn_real *a,
                                       qrn_real *w);
/* Eigenvalues and eigenvectors by divide and conquer: w as QRN_syeig, and A
   is overwritten with the orthonormal eigenvectors, column k belonging to
   w[k]. n above 32767 is QRN_RES_ERR_LA_DIMENSION (LAPACK's workspace would
   not fit its 32-bit sizes). Failures as QRN_syeig. */
QRN_API qrn_rescode QRN_CALL QRN_syevd(qrn_env_t env, qrn_int32 uplo, qrn_int32 n, qrn_real *a,
                                       qrn_real *w);

/* Sparse matrices are given by columns: column j holds nzc[j] entries from
   position ptrc[j] of the row-index array sub and the value array val. */

/* Ordering of a sparse Cholesky factorization. */
enum qrn_cholesky_order_e {
  QRN_CHOLESKY_ORDER_AMD = 0,     /* approximate minimum degree, then a postorder of the elimination tree */
  QRN_CHOLESKY_ORDER_NATURAL = 1  /* no permutation: perm is the identity */
};
/* What a sparse Cholesky factorization does with a matrix that is not
   numerically positive definite. */
enum qrn_cholesky_regularization_e {
  QRN_CHOLESKY_REGULARIZE_NONE = 0, /* refuse it: QRN_RES_ERR_LA_NOT_POSDEF */
  QRN_CHOLESKY_REGULARIZE_SHIFT = 1 /* factor A + delta I instead (below) */
};
/* Sparse Cholesky factorization P (A + D) P' = L L' of the symmetric n x n
   matrix A, given by its lower triangle (entries (i, j) with i >= j) by
   columns in anzc, aptrc, asubc, avalc; within a column the entries may come
   in any order. Refused: a row outside 0..n-1 (QRN_RES_ERR_LA_ROW_INDEX), an
   entry above the diagonal (QRN_RES_ERR_LA_NOT_LOWER), a row given twice in a
   column (QRN_RES_ERR_DUP_INDEX), a negative count (QRN_RES_ERR_NEGATIVE_COUNT)
   or start (QRN_RES_ERR_PTR_RANGE), a value that is NaN or infinite
   (QRN_RES_ERR_VALUE_NAN), an unknown ordering (QRN_RES_ERR_LA_ORDERING).
   ordering: a qrn_cholesky_order_e value.
   regularization and tolsingular: with QRN_CHOLESKY_REGULARIZE_NONE,
   tolsingular is not used and D = 0: a matrix that is not positive definite is
   QRN_RES_ERR_LA_NOT_POSDEF. With QRN_CHOLESKY_REGULARIZE_SHIFT (tolsingular
   must be finite and > 0, else QRN_RES_ERR_LA_REGULARIZATION): let
   s = max(1, max_j |A_jj|). When A is not positive definite, or its smallest
   pivot L_jj^2 is at most tolsingular * s (nearly singular), the library
   factors A + delta I, with delta = tolsingular * s, multiplied by 10 until
   the factorization succeeds (at most 30 times, else
   QRN_RES_ERR_LA_NOT_POSDEF); it then writes delta to the environment's log
   stream. D = delta I (D = 0 when A was factored as it is).
   Results, each an array that the library allocates and the caller gives back
   with QRN_freeenv (all null after a failure):
     *perm  n entries: row and column j of P A P' are row and column perm[j]
            of A, i.e. (P A P')_ij = A_perm[i],perm[j].
     *diag  n entries: D_jj, what was added to the diagonal of A (here the
            same for all j: delta or 0); D is diagonal, so P D P' = D.
     *lnzc, *lptrc  n entries each: column j of L holds lnzc[j] entries from
            position lptrc[j] of *lsubc and *lvalc. The diagonal is inside L:
            it is the first entry of each column, followed by the entries below
            it in increasing row order (entries of the symbolic pattern may
            be 0). Columns follow each other without gaps.
     *lensubnval  the number of entries of L (64 bits), the length of
            *lsubc and *lvalc. */
QRN_API qrn_rescode QRN_CALL QRN_computesparsecholesky(
    qrn_env_t env, qrn_int32 ordering, qrn_int32 regularization, qrn_real tolsingular, qrn_int32 n,
    const qrn_int32 *anzc, const qrn_int64 *aptrc, const qrn_int32 *asubc, const qrn_real *avalc,
    qrn_int32 **perm, qrn_real **diag, qrn_int32 **lnzc, qrn_int64 **lptrc, qrn_int64 *lensubnval,
    qrn_int32 **lsubc, qrn_real **lvalc);
/* Solves L x = b (transposed = QRN_TRANSPOSE_NO) or L' x = b
   (QRN_TRANSPOSE_YES) in place of b, L being an n x n lower triangular matrix
   in the layout of QRN_computesparsecholesky: column j holds lnzc[j] entries
   from position lptrc[j] of lsubc and lvalc (lensubnval entries), its
   diagonal first, then entries of rows j+1..n-1 in any order. L is checked
   entirely before b is touched: a count below 1 or a diagonal that is 0
   (QRN_RES_ERR_LA_SINGULAR), a first entry that is not the diagonal or a later
   one not below it (QRN_RES_ERR_LA_NOT_LOWER), a row outside 0..n-1
   (QRN_RES_ERR_LA_ROW_INDEX), a column reaching outside 0..lensubnval
   (QRN_RES_ERR_PTR_RANGE). A factor L from QRN_computesparsecholesky with
   perm P solves A x = b (D = 0) as: c = P b (c_j = b_perm[j]), solve L y = c,
   then L' z = y, and x = P' z (x_perm[j] = z_j). */
QRN_API qrn_rescode QRN_CALL QRN_sparsetriangularsolvedense(qrn_env_t env, qrn_int32 transposed,
                                                            qrn_int32 n, const qrn_int32 *lnzc,
                                                            const qrn_int64 *lptrc, qrn_int64 lensubnval,
                                                            const qrn_int32 *lsubc, const qrn_real *lvalc,
                                                            qrn_real *b);
/* Gives back memory that the library allocated for the caller (the results of
   QRN_computesparsecholesky); null is accepted and does nothing. */
QRN_API qrn_rescode QRN_CALL QRN_freeenv(qrn_env_t env, void *buffer);

/* Version of the library: 10, 2, revision. */
#define QRN_VERSION_MAJOR 10
#define QRN_VERSION_MINOR 2
#define QRN_VERSION_REVISION 0
QRN_API qrn_rescode QRN_CALL QRN_getversion(qrn_int32 *major, qrn_int32 *minor, qrn_int32 *revision);

/* Size of each buffer of QRN_getcodedesc, NUL included. */
#define QRN_MAX_STR_LEN 1024
/* The symbolic name (e.g. "QRN_RES_ERR_NULL_ENV") and the one-line
   description of a response code, from the table QRN_RESPONSE_CODES, each
   NUL-terminated into a buffer of QRN_MAX_STR_LEN bytes (either may be null).
   A value that is no code of the table is QRN_RES_ERR_UNKNOWN_RESCODE and
   nothing is written. */
QRN_API qrn_rescode QRN_CALL QRN_getcodedesc(qrn_rescode code, char *symname, char *str);

/* Writes a banner to the environment's message stream (QRN_STREAM_MSG): the
   library's name and version and how it was built (compiler, platform, build
   date); when longver is not 0 also the versions of the numerical libraries
   it runs on (OpenBLAS and its thread count, LAPACK, CHOLMOD, UMFPACK, Clp,
   Cbc, CoinUtils, zlib), one per line. */
QRN_API qrn_rescode QRN_CALL QRN_echointro(qrn_env_t env, qrn_int32 longver);
/* Sends a copy of everything the environment writes to stream whichstream
   (0..3, else QRN_RES_ERR_STREAM) into the file filename, besides the linked
   function: the file is truncated, or appended to when append is not 0. A
   file linked earlier to that stream is closed; "" only closes it. A file that
   cannot be opened is QRN_RES_ERR_FILE_OPEN and the earlier link stays. */
QRN_API qrn_rescode QRN_CALL QRN_linkfiletoenvstream(qrn_env_t env, qrn_int32 whichstream,
                                                     const char *filename, qrn_int32 append);

/* ======================================================================= */
/* Conic data: affine expressions, domains, affine conic and disjunctive   */
/* constraints                                                              */
/* ======================================================================= */
/* Affine expressions, addressed by 64-bit indexes, are the rows of
       F x + barF(barX) + g,
   where F is a sparse matrix over the scalar variables, g a vector, and the
   barF part of expression r is sum_j <barF_rj, barX_j>, each barF_rj a
   weighted sum of store matrices (see "Semidefinite data" below). Affine conic
   constraints (ACCs) and disjunctive constraints (DJCs) refer to expressions
   by index and hold none of their own coefficients.

   F entries: indexes are checked (QRN_RES_ERR_INDEX_AFE, QRN_RES_ERR_INDEX_VAR),
   values must be finite (QRN_RES_ERR_VALUE_NAN), and a value of 0 is not
   stored (writing 0 removes the entry). Row and column writers replace the
   whole row (column) and refuse a repeated index (QRN_RES_ERR_DUP_INDEX); in
   putafefentrylist a later duplicate overwrites an earlier one. Rows are read
   in increasing variable order; reading one row costs its length, and
   clearing a column costs the rows that hold it. Every call checks all its
   input before the task changes. */
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumafe(qrn_task_t task, qrn_int64 maxnumafe);
QRN_API qrn_rescode QRN_CALL QRN_getnumafe(qrn_task_t task, qrn_int64 *numafe);
/* Appends num expressions with empty rows and g = 0. */
QRN_API qrn_rescode QRN_CALL QRN_appendafes(qrn_task_t task, qrn_int64 num);
QRN_API qrn_rescode QRN_CALL QRN_putafefentry(qrn_task_t task, qrn_int64 afeidx, qrn_int32 varidx,
                                              qrn_real value);
QRN_API qrn_rescode QRN_CALL QRN_putafefentrylist(qrn_task_t task, qrn_int64 numentr,
                                                  const qrn_int64 *afeidx, const qrn_int32 *varidx,
                                                  const qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_emptyafefrow(qrn_task_t task, qrn_int64 afeidx);
QRN_API qrn_rescode QRN_CALL QRN_emptyafefcol(qrn_task_t task, qrn_int32 varidx);
QRN_API qrn_rescode QRN_CALL QRN_emptyafefrowlist(qrn_task_t task, qrn_int64 numafeidx,
                                                  const qrn_int64 *afeidx);
QRN_API qrn_rescode QRN_CALL QRN_emptyafefcollist(qrn_task_t task, qrn_int64 numvaridx,
                                                  const qrn_int32 *varidx);
QRN_API qrn_rescode QRN_CALL QRN_putafefrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 numnz,
                                            const qrn_int32 *varidx, const qrn_real *val);
/* Replaces rows afeidx[k] by varidx/val[ptrrow[k] .. ptrrow[k]+numnzrow[k]-1];
   every such range must lie inside 0..lenidxval (QRN_RES_ERR_PTR_RANGE), and
   a row may be listed once (QRN_RES_ERR_DUP_INDEX). */
QRN_API qrn_rescode QRN_CALL QRN_putafefrowlist(qrn_task_t task, qrn_int64 numafeidx,
                                                const qrn_int64 *afeidx, const qrn_int32 *numnzrow,
                                                const qrn_int64 *ptrrow, qrn_int64 lenidxval,
                                                const qrn_int32 *varidx, const qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_putafefcol(qrn_task_t task, qrn_int32 varidx, qrn_int64 numnz,
                                            const qrn_int64 *afeidx, const qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_getafefrownumnz(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numnz);
QRN_API qrn_rescode QRN_CALL QRN_getafefnumnz(qrn_task_t task, qrn_int64 *numnz);
QRN_API qrn_rescode QRN_CALL QRN_getafefrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numnz,
                                            qrn_int32 *varidx, qrn_real *val);
/* All of F as getafefnumnz triplets, row by row. */
QRN_API qrn_rescode QRN_CALL QRN_getafeftrip(qrn_task_t task, qrn_int64 *afeidx, qrn_int32 *varidx,
                                             qrn_real *val);
QRN_API qrn_rescode QRN_CALL QRN_putafeg(qrn_task_t task, qrn_int64 afeidx, qrn_real g);
QRN_API qrn_rescode QRN_CALL QRN_getafeg(qrn_task_t task, qrn_int64 afeidx, qrn_real *g);
QRN_API qrn_rescode QRN_CALL QRN_putafeglist(qrn_task_t task, qrn_int64 numafeidx,
                                             const qrn_int64 *afeidx, const qrn_real *g);
QRN_API qrn_rescode QRN_CALL QRN_putafegslice(qrn_task_t task, qrn_int64 first, qrn_int64 last,
                                              const qrn_real *slice);
QRN_API qrn_rescode QRN_CALL QRN_getafegslice(qrn_task_t task, qrn_int64 first, qrn_int64 last,
                                              qrn_real *g);
/* barF. Entry (r, j) is the weighted sum of store matrices termidx with
   termweight (each of the dimension of semidefinite variable j, else
   QRN_RES_ERR_SYMMAT_DIM); writing an entry replaces it, and an entry with no
   terms is removed. Entries of a row are read in increasing j, their terms in
   the order written. putafebarfentrylist sets entries (afeidx[k],
   barvaridx[k]) from the terms ptrterm[k] .. ptrterm[k]+numterm[k]-1 of
   termidx/termweight (inside 0..lenterm, else QRN_RES_ERR_PTR_RANGE);
   putafebarfrow replaces a whole row that way. */
QRN_API qrn_rescode QRN_CALL QRN_putafebarfentry(qrn_task_t task, qrn_int64 afeidx, qrn_int32 barvaridx,
                                                 qrn_int64 numterm, const qrn_int64 *termidx,
                                                 const qrn_real *termweight);
QRN_API qrn_rescode QRN_CALL QRN_putafebarfentrylist(qrn_task_t task, qrn_int64 numafeidx,
                                                     const qrn_int64 *afeidx, const qrn_int32 *barvaridx,
                                                     const qrn_int64 *numterm, const qrn_int64 *ptrterm,
                                                     qrn_int64 lenterm, const qrn_int64 *termidx,
                                                     const qrn_real *termweight);
QRN_API qrn_rescode QRN_CALL QRN_putafebarfrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 numentr,
                                               const qrn_int32 *barvaridx, const qrn_int64 *numterm,
                                               const qrn_int64 *ptrterm, qrn_int64 lenterm,
                                               const qrn_int64 *termidx, const qrn_real *termweight);
QRN_API qrn_rescode QRN_CALL QRN_emptyafebarfrow(qrn_task_t task, qrn_int64 afeidx);
QRN_API qrn_rescode QRN_CALL QRN_emptyafebarfrowlist(qrn_task_t task, qrn_int64 numafeidx,
                                                     const qrn_int64 *afeidxlist);
QRN_API qrn_rescode QRN_CALL QRN_getafebarfnumrowentries(qrn_task_t task, qrn_int64 afeidx,
                                                         qrn_int32 *numentr);
/* Entries of the row, and their terms in all. */
QRN_API qrn_rescode QRN_CALL QRN_getafebarfrowinfo(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *numentr,
                                                   qrn_int64 *numterm);
/* Entry k of the row: barvaridx[k], its terms at ptrterm[k] .. ptrterm[k] +
   numterm[k] - 1 of termidx/termweight (sizes from getafebarfrowinfo). */
QRN_API qrn_rescode QRN_CALL QRN_getafebarfrow(qrn_task_t task, qrn_int64 afeidx, qrn_int32 *barvaridx,
                                               qrn_int64 *ptrterm, qrn_int64 *numterm, qrn_int64 *termidx,
                                               qrn_real *termweight);
/* Block triplets: the lower-triangle entries (subk >= subl) of the matrices
   barF_rj themselves. Writing them replaces every entry (afeidx, barvaridx)
   that they mention by the sum of its triplets (repeated positions add up),
   which becomes a new store matrix with weight 1. Reading expands every entry
   into its non-zero positions: by expression, variable, then column and row. */
QRN_API qrn_rescode QRN_CALL QRN_putafebarfblocktriplet(qrn_task_t task, qrn_int64 numtrip,
                                                        const qrn_int64 *afeidx, const qrn_int32 *barvaridx,
                                                        const qrn_int32 *subk, const qrn_int32 *subl,
                                                        const qrn_real *valkl);
QRN_API qrn_rescode QRN_CALL QRN_getafebarfnumblocktriplets(qrn_task_t task, qrn_int64 *numtrip);
QRN_API qrn_rescode QRN_CALL QRN_getafebarfblocktriplet(qrn_task_t task, qrn_int64 maxnumtrip,
                                                        qrn_int64 *numtrip, qrn_int64 *afeidx,
                                                        qrn_int32 *barvaridx, qrn_int32 *subk,
                                                        qrn_int32 *subl, qrn_real *valkl);

/* Domains, addressed by 64-bit indexes, are only appended. Each append
   returns the new index in *domidx. With x the n values that lie in the
   domain (x0, x1, ...; "x_k:" the entries from k on):
     RPLUS  x >= 0       RMINUS  x <= 0       R  any x      RZERO  x = 0     (n >= 0)
     QUADRATIC_CONE   x0 >= ||x1:||                                            (n >= 1)
     RQUADRATIC_CONE  2 x0 x1 >= ||x2:||^2, x0, x1 >= 0                        (n >= 2)
     PRIMAL_EXP_CONE  x0 >= x1 exp(x2/x1), x0, x1 >= 0 (and its closure x1 = 0:
                      x0 >= 0, x2 <= 0)                                        (n = 3)
     DUAL_EXP_CONE    x0 >= -x2 exp(x1/x2 - 1), x0 >= 0, x2 <= 0 (closure x2 = 0:
                      x0, x1 >= 0)                                             (n = 3)
     PRIMAL_POWER_CONE  prod_{i<nleft} x_i^alpha_i >= ||x_nleft:||, x_i >= 0 for i < nleft
     DUAL_POWER_CONE    prod_{i<nleft} (x_i/alpha_i)^alpha_i >= ||x_nleft:||, x_i >= 0
                        (1 <= nleft <= n; nleft weights, positive and finite,
                        normalised by the library to sum 1)
     PRIMAL_GEO_MEAN_CONE  (prod_{i<n-1} x_i)^(1/(n-1)) >= |x_{n-1}|, x_i >= 0   (n >= 2)
     DUAL_GEO_MEAN_CONE    (n-1) (prod_{i<n-1} x_i)^(1/(n-1)) >= |x_{n-1}|, x_i >= 0 (n >= 2)
     SVEC_PSD_CONE  the symmetric d x d matrices that are positive semidefinite,
                    as the lower triangle by columns with the off-diagonal
                    entries scaled by sqrt(2); n = d(d+1)/2, d >= 1.
   Another dimension is QRN_RES_ERR_DOMAIN_DIMENSION, bad weights
   QRN_RES_ERR_DOMAIN_POWER_WEIGHTS. The dual cones: RPLUS, RMINUS, both
   quadratic cones and SVEC_PSD are their own; R and RZERO are each other's;
   the primal and dual exponential, power (same weights) and geometric-mean
   cones are each other's. */
enum qrn_domaintype_e {
  QRN_DOMAIN_R = 0,
  QRN_DOMAIN_RZERO = 1,
  QRN_DOMAIN_RPLUS = 2,
  QRN_DOMAIN_RMINUS = 3,
  QRN_DOMAIN_QUADRATIC_CONE = 4,
  QRN_DOMAIN_RQUADRATIC_CONE = 5,
  QRN_DOMAIN_PRIMAL_EXP_CONE = 6,
  QRN_DOMAIN_DUAL_EXP_CONE = 7,
  QRN_DOMAIN_PRIMAL_POWER_CONE = 8,
  QRN_DOMAIN_DUAL_POWER_CONE = 9,
  QRN_DOMAIN_PRIMAL_GEO_MEAN_CONE = 10,
  QRN_DOMAIN_DUAL_GEO_MEAN_CONE = 11,
  QRN_DOMAIN_SVEC_PSD_CONE = 12
};
QRN_API qrn_rescode QRN_CALL QRN_appendrplusdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendrminusdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendrdomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendrzerodomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendquadraticconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendrquadraticconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendprimalexpconedomain(qrn_task_t task, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appenddualexpconedomain(qrn_task_t task, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendprimalpowerconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 nleft,
                                                             const qrn_real *alpha, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appenddualpowerconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 nleft,
                                                           const qrn_real *alpha, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendprimalgeomeanconedomain(qrn_task_t task, qrn_int64 n,
                                                               qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appenddualgeomeanconedomain(qrn_task_t task, qrn_int64 n,
                                                             qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_appendsvecpsdconedomain(qrn_task_t task, qrn_int64 n, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumdomain(qrn_task_t task, qrn_int64 maxnumdomain);
QRN_API qrn_rescode QRN_CALL QRN_getnumdomain(qrn_task_t task, qrn_int64 *numdomain);
QRN_API qrn_rescode QRN_CALL QRN_getdomaintype(qrn_task_t task, qrn_int64 domidx, qrn_int32 *domtype);
QRN_API qrn_rescode QRN_CALL QRN_getdomainn(qrn_task_t task, qrn_int64 domidx, qrn_int64 *n);
/* Power cones only (else QRN_RES_ERR_DOMAIN_NOT_POWER); the weights are read
   back normalised. */
QRN_API qrn_rescode QRN_CALL QRN_getpowerdomaininfo(qrn_task_t task, qrn_int64 domidx, qrn_int64 *n,
                                                    qrn_int64 *nleft);
QRN_API qrn_rescode QRN_CALL QRN_getpowerdomainalpha(qrn_task_t task, qrn_int64 domidx, qrn_real *alpha);

/* Affine conic constraints. ACC k requires
       (F x + barF(barX) + g)[afeidxlist] - b  in  domain domidx,
   the number of expressions being the domain's dimension (else
   QRN_RES_ERR_ACC_SIZE); an expression may occur in several ACCs and several
   times in one. A null b means b = 0. The ACCs' rows are stacked in order:
   "total size" (getaccntot) counts them, and the stacked forms (getaccs,
   getaccftrip, getaccgvector, getaccbarfblocktriplet) list row by row. The
   appendaccs/putacclist forms concatenate afeidxlist and b over the ACCs;
   appendaccsseq gives ACC k the numafeidx expressions following those of
   ACC k-1, from afeidxfirst on. */
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumacc(qrn_task_t task, qrn_int64 maxnumacc);
QRN_API qrn_rescode QRN_CALL QRN_getnumacc(qrn_task_t task, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_appendacc(qrn_task_t task, qrn_int64 domidx, qrn_int64 numafeidx,
                                           const qrn_int64 *afeidxlist, const qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_appendaccs(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *domidxs,
                                            qrn_int64 numafeidx, const qrn_int64 *afeidxlist,
                                            const qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_appendaccseq(qrn_task_t task, qrn_int64 domidx, qrn_int64 numafeidx,
                                              qrn_int64 afeidxfirst, const qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_appendaccsseq(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *domidxs,
                                               qrn_int64 numafeidx, qrn_int64 afeidxfirst, const qrn_real *b);
/* Replaces ACC accidx (its size may change). */
QRN_API qrn_rescode QRN_CALL QRN_putacc(qrn_task_t task, qrn_int64 accidx, qrn_int64 domidx,
                                        qrn_int64 numafeidx, const qrn_int64 *afeidxlist, const qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_putacclist(qrn_task_t task, qrn_int64 numaccs, const qrn_int64 *accidxs,
                                            const qrn_int64 *domidxs, qrn_int64 numafeidx,
                                            const qrn_int64 *afeidxlist, const qrn_real *b);
/* lengthb must be the ACC's size. */
QRN_API qrn_rescode QRN_CALL QRN_putaccb(qrn_task_t task, qrn_int64 accidx, qrn_int64 lengthb,
                                         const qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_putaccbj(qrn_task_t task, qrn_int64 accidx, qrn_int64 j, qrn_real bj);
QRN_API qrn_rescode QRN_CALL QRN_getaccdomain(qrn_task_t task, qrn_int64 accidx, qrn_int64 *domidx);
QRN_API qrn_rescode QRN_CALL QRN_getaccn(qrn_task_t task, qrn_int64 accidx, qrn_int64 *n);
QRN_API qrn_rescode QRN_CALL QRN_getaccntot(qrn_task_t task, qrn_int64 *n);
QRN_API qrn_rescode QRN_CALL QRN_getaccafeidxlist(qrn_task_t task, qrn_int64 accidx, qrn_int64 *afeidxlist);
QRN_API qrn_rescode QRN_CALL QRN_getaccb(qrn_task_t task, qrn_int64 accidx, qrn_real *b);
/* getnumacc domains, then getaccntot expression indexes and b values. */
QRN_API qrn_rescode QRN_CALL QRN_getaccs(qrn_task_t task, qrn_int64 *domidxlist, qrn_int64 *afeidxlist,
                                         qrn_real *b);
/* F of the stacked rows: getaccfnumnz triplets (stacked row, variable, value). */
QRN_API qrn_rescode QRN_CALL QRN_getaccfnumnz(qrn_task_t task, qrn_int64 *accfnnz);
QRN_API qrn_rescode QRN_CALL QRN_getaccftrip(qrn_task_t task, qrn_int64 *frow, qrn_int32 *fcol, qrn_real *fval);
/* The constant of each stacked row: g[afe] - b (getaccntot values). */
QRN_API qrn_rescode QRN_CALL QRN_getaccgvector(qrn_task_t task, qrn_real *g);
/* barF of the stacked rows as block triplets (stacked row, variable, k, l, value). */
QRN_API qrn_rescode QRN_CALL QRN_getaccbarfnumblocktriplets(qrn_task_t task, qrn_int64 *numtrip);
QRN_API qrn_rescode QRN_CALL QRN_getaccbarfblocktriplet(qrn_task_t task, qrn_int64 maxnumtrip,
                                                        qrn_int64 *numtrip, qrn_int64 *acc_afe,
                                                        qrn_int32 *bar_var, qrn_int32 *blk_row,
                                                        qrn_int32 *blk_col, qrn_real *blk_val);

/* Disjunctive constraints. DJC k holds domains, expressions, b and term sizes:
   term t is the conjunction of the next termsizelist[t] domains (each
   positive, summing to the number of domains, else QRN_RES_ERR_DJC_TERMS),
   and each domain takes the next dim expressions and b values (the dims
   summing to numafeidx, else QRN_RES_ERR_ACC_SIZE). DJC k holds when at least
   one of its terms holds. appenddjcs appends empty DJCs (no terms: never
   satisfied until written). putdjcslice writes DJCs first..last-1, DJC
   first+i taking the next termsindjc[i] terms (summing to numterms). */
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumdjc(qrn_task_t task, qrn_int64 maxnumdjc);
QRN_API qrn_rescode QRN_CALL QRN_getnumdjc(qrn_task_t task, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_appenddjcs(qrn_task_t task, qrn_int64 num);
QRN_API qrn_rescode QRN_CALL QRN_putdjc(qrn_task_t task, qrn_int64 djcidx, qrn_int64 numdomidx,
                                        const qrn_int64 *domidxlist, qrn_int64 numafeidx,
                                        const qrn_int64 *afeidxlist, const qrn_real *b, qrn_int64 numterms,
                                        const qrn_int64 *termsizelist);
QRN_API qrn_rescode QRN_CALL QRN_putdjcslice(qrn_task_t task, qrn_int64 idxfirst, qrn_int64 idxlast,
                                             qrn_int64 numdomidx, const qrn_int64 *domidxlist,
                                             qrn_int64 numafeidx, const qrn_int64 *afeidxlist,
                                             const qrn_real *b, qrn_int64 numterms,
                                             const qrn_int64 *termsizelist, const qrn_int64 *termsindjc);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumdomain(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numdomain);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumdomaintot(qrn_task_t task, qrn_int64 *numdomaintot);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumafe(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numafe);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumafetot(qrn_task_t task, qrn_int64 *numafetot);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumterm(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *numterm);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnumtermtot(qrn_task_t task, qrn_int64 *numtermtot);
QRN_API qrn_rescode QRN_CALL QRN_getdjcdomainidxlist(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *domidxlist);
QRN_API qrn_rescode QRN_CALL QRN_getdjcafeidxlist(qrn_task_t task, qrn_int64 djcidx, qrn_int64 *afeidxlist);
QRN_API qrn_rescode QRN_CALL QRN_getdjcb(qrn_task_t task, qrn_int64 djcidx, qrn_real *b);
QRN_API qrn_rescode QRN_CALL QRN_getdjctermsizelist(qrn_task_t task, qrn_int64 djcidx,
                                                    qrn_int64 *termsizelist);
/* All DJCs concatenated; numterms gets each DJC's number of terms. */
QRN_API qrn_rescode QRN_CALL QRN_getdjcs(qrn_task_t task, qrn_int64 *domidxlist, qrn_int64 *afeidxlist,
                                         qrn_real *b, qrn_int64 *termsizelist, qrn_int64 *numterms);

/* Names of domains, ACCs and DJCs follow the rules of the names section
   below; generateaccnames/generatedjcnames work as QRN_generatevarnames. */
QRN_API qrn_rescode QRN_CALL QRN_putdomainname(qrn_task_t task, qrn_int64 domidx, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_getdomainnamelen(qrn_task_t task, qrn_int64 domidx, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getdomainname(qrn_task_t task, qrn_int64 domidx, qrn_int32 sizename,
                                               char *name);
QRN_API qrn_rescode QRN_CALL QRN_putaccname(qrn_task_t task, qrn_int64 accidx, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_getaccnamelen(qrn_task_t task, qrn_int64 accidx, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getaccname(qrn_task_t task, qrn_int64 accidx, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_putdjcname(qrn_task_t task, qrn_int64 djcidx, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_getdjcnamelen(qrn_task_t task, qrn_int64 djcidx, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getdjcname(qrn_task_t task, qrn_int64 djcidx, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_generateaccnames(qrn_task_t task, qrn_int64 num, const qrn_int64 *sub,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names);
QRN_API qrn_rescode QRN_CALL QRN_generatedjcnames(qrn_task_t task, qrn_int64 num, const qrn_int64 *sub,
                                                  const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                  const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                  const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                  const char *const *names);

/* ======================================================================= */
/* Semidefinite data                                                       */
/* ======================================================================= */
/* Semidefinite variables barX_j are symmetric d_j x d_j matrices, addressed
   by 32-bit indexes; their values (barx, bars) are the lower triangle by
   columns, unscaled: d(d+1)/2 entries (getlenbarvarj), X_00, X_10, ...,
   X_(d-1)0, X_11, X_21, ... Semidefinite terms use <A, X> = sum_ij A_ij X_ij;
   the objective is c'x + cfix + 1/2 x'Qx + sum_j <barC_j, barX_j> and
   constraint i's activity adds sum_j <barA_ij, barX_j>.

   Symmetric matrices are appended once to the task's store (64-bit indexes)
   by the triplets of their lower triangle: an entry above the diagonal
   (QRN_RES_ERR_SYMMAT_UPPER), outside the dimension (QRN_RES_ERR_SYMMAT_RANGE)
   or given twice (QRN_RES_ERR_SYMMAT_REPEATED) is refused; values must be
   finite. They are read back sorted by column, then row. Coefficients barC_j,
   barA_ij and barF_rj are weighted sums of store matrices of the variable's
   dimension. Removing semidefinite variables drops their coefficients and
   solution values and renumbers the others; removing constraints drops their
   barA rows. */
enum qrn_symmattype_e { QRN_SYMMAT_TYPE_SPARSE = 0 };
QRN_API qrn_rescode QRN_CALL QRN_appendbarvars(qrn_task_t task, qrn_int32 num, const qrn_int32 *dim);
QRN_API qrn_rescode QRN_CALL QRN_removebarvars(qrn_task_t task, qrn_int32 num, const qrn_int32 *subset);
QRN_API qrn_rescode QRN_CALL QRN_getnumbarvar(qrn_task_t task, qrn_int32 *numbarvar);
QRN_API qrn_rescode QRN_CALL QRN_getmaxnumbarvar(qrn_task_t task, qrn_int32 *maxnumbarvar);
QRN_API qrn_rescode QRN_CALL QRN_putmaxnumbarvar(qrn_task_t task, qrn_int32 maxnumbarvar);
QRN_API qrn_rescode QRN_CALL QRN_getdimbarvarj(qrn_task_t task, qrn_int32 j, qrn_int32 *dimbarvarj);
QRN_API qrn_rescode QRN_CALL QRN_getlenbarvarj(qrn_task_t task, qrn_int32 j, qrn_int64 *lenbarvarj);
QRN_API qrn_rescode QRN_CALL QRN_appendsparsesymmat(qrn_task_t task, qrn_int32 dim, qrn_int64 nz,
                                                    const qrn_int32 *subi, const qrn_int32 *subj,
                                                    const qrn_real *valij, qrn_int64 *idx);
/* Matrix k takes the next nz[k] triplets; idx gets the num new indexes. */
QRN_API qrn_rescode QRN_CALL QRN_appendsparsesymmatlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *dims,
                                                        const qrn_int64 *nz, const qrn_int32 *subi,
                                                        const qrn_int32 *subj, const qrn_real *valij,
                                                        qrn_int64 *idx);
QRN_API qrn_rescode QRN_CALL QRN_getnumsymmat(qrn_task_t task, qrn_int64 *num);
/* *type is a qrn_symmattype_e value. */
QRN_API qrn_rescode QRN_CALL QRN_getsymmatinfo(qrn_task_t task, qrn_int64 idx, qrn_int32 *dim, qrn_int64 *nz,
                                               qrn_int32 *type);
QRN_API qrn_rescode QRN_CALL QRN_getsparsesymmat(qrn_task_t task, qrn_int64 idx, qrn_int64 maxlen,
                                                 qrn_int32 *subi, qrn_int32 *subj, qrn_real *valij);
/* Coefficients: writing replaces (num = 0 removes). A position ("idx") names
   one non-zero coefficient: j for barC_j and i * 2^31 + j for barA_ij; the
   sparsity functions list them in increasing order, and a position that names
   no coefficient is QRN_RES_ERR_BAR_POSITION. */
QRN_API qrn_rescode QRN_CALL QRN_putbarcj(qrn_task_t task, qrn_int32 j, qrn_int64 num, const qrn_int64 *sub,
                                          const qrn_real *weights);
QRN_API qrn_rescode QRN_CALL QRN_putbaraij(qrn_task_t task, qrn_int32 i, qrn_int32 j, qrn_int64 num,
                                           const qrn_int64 *sub, const qrn_real *weights);
/* Entry k: barA_(subi[k], subj[k]) from matidx/weights[alphaptrb[k] ..
   alphaptre[k]-1]. */
QRN_API qrn_rescode QRN_CALL QRN_putbaraijlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                               const qrn_int32 *subj, const qrn_int64 *alphaptrb,
                                               const qrn_int64 *alphaptre, const qrn_int64 *matidx,
                                               const qrn_real *weights);
/* Replaces rows subi[k] of barA: their entries are p = ptrb[k] .. ptre[k]-1 of
   subj/nummat, entry p taking the next nummat[p] matrices of matidx/weights
   (counted over the entries in order from 0). */
QRN_API qrn_rescode QRN_CALL QRN_putbararowlist(qrn_task_t task, qrn_int32 num, const qrn_int32 *subi,
                                                const qrn_int64 *ptrb, const qrn_int64 *ptre,
                                                const qrn_int32 *subj, const qrn_int64 *nummat,
                                                const qrn_int64 *matidx, const qrn_real *weights);
QRN_API qrn_rescode QRN_CALL QRN_getnumbarcnz(qrn_task_t task, qrn_int64 *nz);
QRN_API qrn_rescode QRN_CALL QRN_getnumbaranz(qrn_task_t task, qrn_int64 *nz);
QRN_API qrn_rescode QRN_CALL QRN_getbarcsparsity(qrn_task_t task, qrn_int64 maxnumnz, qrn_int64 *numnz,
                                                 qrn_int64 *idxj);
QRN_API qrn_rescode QRN_CALL QRN_getbarasparsity(qrn_task_t task, qrn_int64 maxnumnz, qrn_int64 *numnz,
                                                 qrn_int64 *idxij);
QRN_API qrn_rescode QRN_CALL QRN_getbarcidxinfo(qrn_task_t task, qrn_int64 idx, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_getbarcidxj(qrn_task_t task, qrn_int64 idx, qrn_int32 *j);
QRN_API qrn_rescode QRN_CALL QRN_getbarcidx(qrn_task_t task, qrn_int64 idx, qrn_int64 maxnum, qrn_int32 *j,
                                            qrn_int64 *num, qrn_int64 *sub, qrn_real *weights);
QRN_API qrn_rescode QRN_CALL QRN_getbaraidxinfo(qrn_task_t task, qrn_int64 idx, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_getbaraidxij(qrn_task_t task, qrn_int64 idx, qrn_int32 *i, qrn_int32 *j);
QRN_API qrn_rescode QRN_CALL QRN_getbaraidx(qrn_task_t task, qrn_int64 idx, qrn_int64 maxnum, qrn_int32 *i,
                                            qrn_int32 *j, qrn_int64 *num, qrn_int64 *sub, qrn_real *weights);
/* Block triplets, as for barF: writing replaces each mentioned coefficient by
   the sum of its triplets (a new store matrix); reading lists the non-zero
   lower-triangle positions of every coefficient, by i, j, column, row. */
QRN_API qrn_rescode QRN_CALL QRN_putbarcblocktriplet(qrn_task_t task, qrn_int64 num, const qrn_int32 *subj,
                                                     const qrn_int32 *subk, const qrn_int32 *subl,
                                                     const qrn_real *valjkl);
QRN_API qrn_rescode QRN_CALL QRN_putbarablocktriplet(qrn_task_t task, qrn_int64 num, const qrn_int32 *subi,
                                                     const qrn_int32 *subj, const qrn_int32 *subk,
                                                     const qrn_int32 *subl, const qrn_real *valijkl);
QRN_API qrn_rescode QRN_CALL QRN_getnumbarcblocktriplets(qrn_task_t task, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_getnumbarablocktriplets(qrn_task_t task, qrn_int64 *num);
QRN_API qrn_rescode QRN_CALL QRN_getbarcblocktriplet(qrn_task_t task, qrn_int64 maxnum, qrn_int64 *numtrip,
                                                     qrn_int32 *subj, qrn_int32 *subk, qrn_int32 *subl,
                                                     qrn_real *valjkl);
QRN_API qrn_rescode QRN_CALL QRN_getbarablocktriplet(qrn_task_t task, qrn_int64 maxnum, qrn_int64 *numtrip,
                                                     qrn_int32 *subi, qrn_int32 *subj, qrn_int32 *subk,
                                                     qrn_int32 *subl, qrn_real *valijkl);
QRN_API qrn_rescode QRN_CALL QRN_putbarvarname(qrn_task_t task, qrn_int32 j, const char *name);
QRN_API qrn_rescode QRN_CALL QRN_getbarvarnamelen(qrn_task_t task, qrn_int32 j, qrn_int32 *len);
QRN_API qrn_rescode QRN_CALL QRN_getbarvarname(qrn_task_t task, qrn_int32 j, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getbarvarnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                    qrn_int32 *index);
QRN_API qrn_rescode QRN_CALL QRN_generatebarvarnames(qrn_task_t task, qrn_int32 num, const qrn_int32 *subj,
                                                     const char *fmt, qrn_int32 ndims, const qrn_int32 *dims,
                                                     const qrn_int64 *sp, qrn_int32 numnamedaxis,
                                                     const qrn_int32 *namedaxisidxs, qrn_int64 numnames,
                                                     const char *const *names);

/* ======================================================================= */
/* Solution values of conic and semidefinite data                          */
/* ======================================================================= */
/* whichsol is a qrn_soltype_e value (else QRN_RES_ERR_WHICHSOL). Reading a
   solution that is not defined is QRN_RES_ERR_NO_SOLUTION; writing a vector
   of an undefined solution defines it, every other value 0 and every key and
   status unknown. A defined solution keeps one doty value per stacked ACC row
   and barx/bars per semidefinite variable; data changes keep them aligned
   (new rows and variables get 0). */
QRN_API qrn_rescode QRN_CALL QRN_getaccdoty(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx, qrn_real *doty);
QRN_API qrn_rescode QRN_CALL QRN_getaccdotys(qrn_task_t task, qrn_int32 whichsol, qrn_real *doty);
QRN_API qrn_rescode QRN_CALL QRN_putaccdoty(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx,
                                            const qrn_real *doty);
/* The activity of an ACC: (F xx + barF(barx) + g)[afeidxlist] - b, the value
   that must lie in its domain; evaluateaccs stacks all ACCs. */
QRN_API qrn_rescode QRN_CALL QRN_evaluateacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 accidx,
                                             qrn_real *activity);
QRN_API qrn_rescode QRN_CALL QRN_evaluateaccs(qrn_task_t task, qrn_int32 whichsol, qrn_real *activity);
QRN_API qrn_rescode QRN_CALL QRN_getbarxj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, qrn_real *barxj);
QRN_API qrn_rescode QRN_CALL QRN_getbarsj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j, qrn_real *barsj);
QRN_API qrn_rescode QRN_CALL QRN_putbarxj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j,
                                          const qrn_real *barxj);
QRN_API qrn_rescode QRN_CALL QRN_putbarsj(qrn_task_t task, qrn_int32 whichsol, qrn_int32 j,
                                          const qrn_real *barsj);
/* Variables first..last-1 one after the other; slicesize below their total
   length is QRN_RES_ERR_TOO_SMALL. */
QRN_API qrn_rescode QRN_CALL QRN_getbarxslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                              qrn_int32 last, qrn_int64 slicesize, qrn_real *barxslice);
QRN_API qrn_rescode QRN_CALL QRN_getbarsslice(qrn_task_t task, qrn_int32 whichsol, qrn_int32 first,
                                              qrn_int32 last, qrn_int64 slicesize, qrn_real *barsslice);
/* Violations, one per listed item, never negative:
   - ACC (primal): the distance of the activity to the domain. It is the
     Euclidean distance for the orthants, R, RZERO, both quadratic cones and
     SVEC_PSD (the root of the sum of squared negative eigenvalues); for the
     exponential, power and geometric-mean cones it is the larger of the
     largest negative part of an entry that must be nonnegative (positive part
     for one that must be nonpositive) and the cone's residual, which is
     positively homogeneous, 0 exactly on the cone: x1 exp(x2/x1) - x0,
     -x2 exp(x1/x2 - 1) - x0, ||x_nleft:|| - prod x_i^alpha_i,
     ||x_nleft:|| - prod (x_i/alpha_i)^alpha_i, |x_{n-1}| - geomean(x),
     |x_{n-1}| - (n-1) geomean(x).
   - ACC (dual): the same measure of doty against the dual cone.
   - DJC: the smallest over its terms of the largest violation of the term's
     domains (+inf for a DJC without terms).
   - semidefinite variable: max(0, -smallest eigenvalue) of barx (primal) or
     bars (dual). */
QRN_API qrn_rescode QRN_CALL QRN_getpviolacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numaccidx,
                                             const qrn_int64 *accidxlist, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getdviolacc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numaccidx,
                                             const qrn_int64 *accidxlist, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getpvioldjc(qrn_task_t task, qrn_int32 whichsol, qrn_int64 numdjcidx,
                                             const qrn_int64 *djcidxlist, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getpviolbarvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                                const qrn_int32 *sub, qrn_real *viol);
QRN_API qrn_rescode QRN_CALL QRN_getdviolbarvar(qrn_task_t task, qrn_int32 whichsol, qrn_int32 num,
                                                const qrn_int32 *sub, qrn_real *viol);
/* The whole solution with doty: arrays of numcon, numvar, numcone, numcon,
   numvar, numcon (y, slc, suc), numvar (slx, sux, snx) and getaccntot entries.
   Null arrays are skipped (not written; on input, left unchanged, or 0 and
   unknown keys for a solution that was not defined). */
QRN_API qrn_rescode QRN_CALL QRN_getsolutionnew(qrn_task_t task, qrn_int32 whichsol, qrn_int32 *prosta,
                                                qrn_int32 *solsta, qrn_int32 *skc, qrn_int32 *skx,
                                                qrn_int32 *skn, qrn_real *xc, qrn_real *xx, qrn_real *y,
                                                qrn_real *slc, qrn_real *suc, qrn_real *slx, qrn_real *sux,
                                                qrn_real *snx, qrn_real *doty);
QRN_API qrn_rescode QRN_CALL QRN_putsolutionnew(qrn_task_t task, qrn_int32 whichsol, const qrn_int32 *skc,
                                                const qrn_int32 *skx, const qrn_int32 *skn, const qrn_real *xc,
                                                const qrn_real *xx, const qrn_real *y, const qrn_real *slc,
                                                const qrn_real *suc, const qrn_real *slx, const qrn_real *sux,
                                                const qrn_real *snx, const qrn_real *doty);
/* Summary of a solution: primal objective; largest primal violation of
   constraints, variable bounds, semidefinite variables, cones, ACCs, DJCs and
   integrality; dual objective; largest dual violation of constraints,
   variables, semidefinite variables, cones and ACCs. */
QRN_API qrn_rescode QRN_CALL QRN_getsolutioninfonew(qrn_task_t task, qrn_int32 whichsol, qrn_real *pobj,
                                                    qrn_real *pviolcon, qrn_real *pviolvar,
                                                    qrn_real *pviolbarvar, qrn_real *pviolcone,
                                                    qrn_real *pviolacc, qrn_real *pvioldjc, qrn_real *pviolitg,
                                                    qrn_real *dobj, qrn_real *dviolcon, qrn_real *dviolvar,
                                                    qrn_real *dviolbarvar, qrn_real *dviolcone,
                                                    qrn_real *dviolacc);

/* ======================================================================= */
/* Optimization, analysis and repair                                       */
/* ======================================================================= */
/* Optimizers (docs/optimizers.md has the details and the sign conventions).
   QRN_optimizetrm solves the task's problem and stores what it finds as the
   task's solutions; every solution of the task is first made undefined, then
   the optimizer defines those it produces:
     - linear problem: dual simplex by default (QRN_IPAR_ALGORITHM AUTO or
       ANY_SIMPLEX), primal simplex, or the interior-point method (IPM): the
       simplex methods give the basic solution (QRN_SOL_BAS); IPM gives the
       interior solution (QRN_SOL_ITR) and, with QRN_IPAR_CROSSOVER on, the
       basic one too;
     - convex quadratic objective: IPM (AUTO or IPM), interior solution only;
       the simplex choices are refused (QRN_RES_ERR_OPT_COMBINATION);
     - integer variables, or QRN_ALGORITHM_MIXED_INT: the mixed-integer
       optimizer (branch and cut; relaxations by simplex), integer solution
       (QRN_SOL_ITG); with IPM it is refused (QRN_RES_ERR_OPT_COMBINATION);
       with conic data, quadratic constraints or a quadratic objective, and
       for disjunctive constraints, the mixed-integer conic optimizer below.
     - conic, semidefinite and quadratically constrained problems: the conic
       interior-point optimizer below (which also takes linear and quadratic
       problems when IPM is chosen, and quadratic ones under AUTO).
   Refused before anything runs, leaving the task as it was: the refusals of
   the conic optimizer below.
   Dual values follow one identity for both senses:
       c + Q xx - A' y - slx + sux = 0,   y = slc - suc,
   with slc, suc, slx, sux >= 0 when minimizing and <= 0 when maximizing; the
   dual objective is lc'slc - uc'suc + lx'slx - ux'sux + cfix (- 1/2 xx'Q xx).
   An infeasible problem gets the status pair (QRN_PRO_STA_PRIM_INFEAS,
   QRN_SOL_STA_PRIM_INFEAS_CER) and a Farkas certificate in y, slc, suc, slx,
   sux (the identity with c = 0 and Q = 0, and a dual objective > 0 when
   minimizing, < 0 when maximizing; xx and xc are 0). An unbounded one gets
   (QRN_PRO_STA_DUAL_INFEAS, QRN_SOL_STA_DUAL_INFEAS_CER): xx is a ray d with
   A d in the recession cone of the constraint bounds, d in that of the
   variable bounds, Q d = 0 and c'd < 0 (> 0 when maximizing), xc = A d.
   Every status a solver reports is checked against the vectors before it is
   stored.
   *trmcode receives QRN_RES_OK when the run ended normally, or one of the
   QRN_RES_TRM_... codes; the response code is not 0 only when the run could
   not be made (a refused problem or parameter combination, a solver failure).
   While it runs, the callback receives the QRN_CALLBACK_... optimizer codes
   with the information items filled with live values; a non-zero answer
   stops the run (QRN_RES_TRM_USER_CALLBACK), the solutions then hold the last
   iterate with unknown statuses (for the mixed-integer optimizer: the best
   integer solution found, if any). The log stream receives a header, the
   iteration lines and a summary (nothing at QRN_IPAR_LOG_LEVEL 0). */
QRN_API qrn_rescode QRN_CALL QRN_optimizetrm(qrn_task_t task, qrn_int32 *trmcode);

/* ---- The conic interior-point optimizer ------------------------------------
   Conic problems (cones, ACCs, semidefinite variables), quadratically
   constrained ones, and linear and quadratic problems for which the
   interior-point method is chosen (QRN_IPAR_ALGORITHM IPM, or AUTO with a
   quadratic objective) are solved by the library's own homogeneous
   primal-dual interior-point optimizer (docs/conic-optimizer.md). It fills
   the interior solution (QRN_SOL_ITR) only: xx, xc, barx; y, slc, suc, slx,
   sux, snx, doty, bars. Its duals follow the Lagrangian above extended by
   the conic terms: with ACC k requiring  F x + barF(barX) + g - b in D_k,
     c + Q xx - A'y - sum_i y_i Q_i xx - slx + sux - snx - F'doty = 0,
     barC_j - sum_i y_i barA_ij - sum_r doty_r barF_rj - barS_j = 0,
   doty in D* (the dual cone of each ACC's domain) and barS_j positive
   semidefinite when minimizing, -doty in D* and -barS_j PSD when
   maximizing; the dual objective adds -doty'(g - b). A quadratic constraint
   is stated as a rotated quadratic cone: y_i is its multiplier, as for a
   linear row (<= 0 for an upper bound when minimizing).
   Statuses: optimal (PRIM_AND_DUAL_FEAS, OPTIMAL); a primal infeasibility
   certificate (PRIM_INFEAS, PRIM_INFEAS_CER): the duals satisfy both
   stationarity rows with c, Q, barC taken as 0 and the dual objective (bound
   terms - doty'(g - b)) is positive (negative when maximizing); a dual
   infeasibility certificate (DUAL_INFEAS, DUAL_INFEAS_CER): xx, barx form a
   ray (every constraint and cone holds with b, g and finite bounds taken as
   0) with c'xx + <barC, barx> < 0 (> 0 when maximizing); otherwise both
   statuses unknown, the termination code saying why (QRN_RES_TRM_MAX_ITERATIONS,
   _MAX_TIME, _USER_CALLBACK, _NUMERICAL_PROBLEM).
   Refused before anything changes: disjunctive constraints under
   QRN_ALGORITHM_IPM (QRN_RES_ERR_OPT_DJC), a quadratic constraint that is
   not convex (a non-zero Q_i with two finite bounds, Q_i not PSD under an
   upper bound or not NSD under a lower one: QRN_RES_ERR_OPT_QCON_NONCONVEX),
   and a simplex choice of QRN_IPAR_ALGORITHM (QRN_RES_ERR_OPT_COMBINATION).
   Parameters: QRN_DPAR_PRIMAL_FEAS_TOL and DUAL_FEAS_TOL (relative
   residuals), OPT_TOL (relative and absolute gap), INFEAS_TOL
   (certificates), IPM_STEP_FRACTION, IPM_MAX_ITER, TIME_LIMIT, SCALING
   (NONE turns the equilibration off), PRESOLVE (removes fixed variables
   and empty linear rows that hold), CHECK_CONVEXITY and CONVEXITY_TOL (the
   objective; quadratic constraints are always checked), LOG_LEVEL and
   CALLBACK_INTERVAL. The callback receives QRN_CALLBACK_BEGIN_BARRIER,
   QRN_CALLBACK_BARRIER_ITERATION with the QRN_DINF_IPM_* items live, and
   QRN_CALLBACK_END_BARRIER. */

/* ---- The mixed-integer conic optimizer -------------------------------------
   Integer variables together with conic data (cones, ACCs, semidefinite
   variables), quadratic constraints or a convex quadratic objective, and
   every problem with disjunctive constraints (QRN_IPAR_ALGORITHM AUTO or
   MIXED_INT), are solved by a branch and bound whose node relaxations the
   conic interior-point optimizer solves (docs/mip-conic.md). A DJC is met
   by branching on its terms (one child per term, which adds the term's
   domains); terms may use any domain. Semidefinite variables are
   continuous. It fills the integer solution (QRN_SOL_ITG) only: xx, xc,
   barx; the dual vectors (doty and bars included) are 0. Statuses:
   (PRIM_FEAS, INTEGER_OPTIMAL) when the search ended within the gaps;
   (PRIM_FEAS, PRIM_FEAS) when a limit, the callback or numerical trouble
   ended it with a solution; (PRIM_INFEAS, UNKNOWN) when no integer point is
   feasible; (PRIM_INFEAS_OR_UNBOUNDED, UNKNOWN) when a relaxation that no
   disjunction can bound is unbounded. Stopped without a solution, the
   integer solution stays undefined. Parameters: QRN_DPAR_MIP_REL_GAP and
   MIP_ABS_GAP, MIP_INT_TOL, MIP_TIME_LIMIT (and TIME_LIMIT), MIP_OBJ_CUTOFF,
   QRN_IPAR_MIP_NODE_LIMIT, MIP_SOLUTION_LIMIT, MIP_BRANCH_DIR,
   MIP_NODE_SELECTION, PRESOLVE, and the conic optimizer's tolerances for the
   relaxations. The callback receives QRN_CALLBACK_BEGIN_MIP,
   QRN_CALLBACK_MIP_NODE (at most every CALLBACK_INTERVAL),
   QRN_CALLBACK_NEW_INT_SOLUTION for every better integer solution (with
   QRN_DINF_MIP_OBJ, MIP_OBJ_BOUND, MIP_REL_GAP, MIP_ABS_GAP, TIME_MIP,
   QRN_LIINF_MIP_NODES and QRN_IINF_MIP_SOLUTIONS live) and
   QRN_CALLBACK_END_MIP. */

/* Rewrites a quadratic objective and quadratic constraints into affine
   conic constraints over rotated quadratic cones; the rewritten task has the
   same optimum. Each term 1/2 x'Qx (Q = F'F convex, factored by its
   eigenvalues) gets a new free variable t, appended after the existing
   variables in the order objective, then constraints by index, and the ACC
   (t, 1, F x) in the rotated quadratic cone (2 t >= ||F x||^2, appended with
   new expressions and a new domain). The objective c'x + 1/2 x'Qx becomes
   c'x + t (maximizing a concave one: c'x - t with F from -Q); constraint
   a'x + 1/2 x'Q_i x <= uc becomes a'x + t <= uc, and a'x + 1/2 x'Q_i x >= lc
   (Q_i NSD) becomes a'x - t >= lc; the quadratic terms are removed. A free
   constraint just loses its terms. Refused without a change: a quadratic
   objective that is not convex (concave) by more than QRN_DPAR_CONVEXITY_TOL
   (QRN_RES_ERR_OPT_NONCONVEX), a quadratic constraint that is not convex
   (QRN_RES_ERR_OPT_QCON_NONCONVEX). */
QRN_API qrn_rescode QRN_CALL QRN_toconic(qrn_task_t task);

/* Nothing is buffered: accepted for compatibility, it only checks the task. */
QRN_API qrn_rescode QRN_CALL QRN_commitchanges(qrn_task_t task);
/* Sets the five capacities at once; refused (QRN_RES_ERR_MAX_CAPACITY,
   QRN_RES_ERR_NEGATIVE_COUNT) without changing any when one is below what
   the task holds. */
QRN_API qrn_rescode QRN_CALL QRN_resizetask(qrn_task_t task, qrn_int32 maxnumcon, qrn_int32 maxnumvar,
                                            qrn_int32 maxnumcone, qrn_int64 maxnumanz, qrn_int64 maxnumqnz);

/* Basis services, on the basis of the task's basic solution (QRN_SOL_BAS):
   exactly numcon items with status key QRN_SK_BASIS, else QRN_RES_ERR_NO_BASIS.
   Items are numbered slacks first: i < numcon is constraint i, numcon + j is
   variable j. The basis matrix B (numcon x numcon) has, for basic position k,
   the column of item basis[k] in [-I A], i.e. of the system A xx - xc = 0:
   -e_i for constraint i, column j of A for variable j.
   initbasissolve writes basis[0..numcon) and factors B (QRN_RES_ERR_BASIS_SINGULAR
   when it is singular); the factor stays with the task until its data or basis
   change. solvewithbasis (after initbasissolve, else QRN_RES_ERR_BASIS_NOT_INIT)
   solves B x = b (transp 0) or B' x = b (transp != 0) in place: on entry
   sub[0..numnz) lists the positions of the non-zeros of b and val holds b as a
   dense vector of numcon entries (only listed positions are read); on return
   sub[0..*numnzout) lists the non-zeros of x, val holds x densely, and every
   other entry of val is 0. basiscond writes ||B||_1 and an estimate of
   ||B^-1||_1 (Hager's method); their product estimates the condition number. */
QRN_API qrn_rescode QRN_CALL QRN_initbasissolve(qrn_task_t task, qrn_int32 *basis);
QRN_API qrn_rescode QRN_CALL QRN_solvewithbasis(qrn_task_t task, qrn_int32 transp, qrn_int32 numnz,
                                                qrn_int32 *sub, qrn_real *val, qrn_int32 *numnzout);
QRN_API qrn_rescode QRN_CALL QRN_basiscond(qrn_task_t task, qrn_real *nrmbasis, qrn_real *nrminvbasis);

/* Sensitivity analysis of an optimal basic solution of a linear problem
   (QRN_RES_ERR_NO_BASIS without one). marki/markj say which bound of item
   subi[k]/subj[k] is analysed. For a bound: the shadow prices are the rates
   of change of the optimal objective when the bound is decreased (left) or
   increased (right); the ranges are how far (>= 0, QRN_INFINITY-free +inf
   when unlimited) it can be decreased or increased while the optimal basis
   stays optimal (primal feasible). dualsensitivity does the same for the
   objective coefficients c_j: prices are the rates of change of the optimal
   objective (the value of x_j), ranges how far c_j can move down or up with
   the basis staying optimal. A fixed item's two bounds move together. */
enum qrn_mark_e { QRN_MARK_LO = 0, QRN_MARK_UP = 1 };
QRN_API qrn_rescode QRN_CALL QRN_primalsensitivity(qrn_task_t task, qrn_int32 numi, const qrn_int32 *subi,
                                                   const qrn_int32 *marki, qrn_int32 numj,
                                                   const qrn_int32 *subj, const qrn_int32 *markj,
                                                   qrn_real *leftpricei, qrn_real *rightpricei,
                                                   qrn_real *leftrangei, qrn_real *rightrangei,
                                                   qrn_real *leftpricej, qrn_real *rightpricej,
                                                   qrn_real *leftrangej, qrn_real *rightrangej);
QRN_API qrn_rescode QRN_CALL QRN_dualsensitivity(qrn_task_t task, qrn_int32 numj, const qrn_int32 *subj,
                                                 qrn_real *leftpricej, qrn_real *rightpricej,
                                                 qrn_real *leftrangej, qrn_real *rightrangej);

/* Feasibility repair. Phase 1 finds the least weighted relaxation of the
   bounds: minimize sum wlc_i vlc_i + wuc_i vuc_i + wlx_j vlx_j + wux_j vux_j
   over lc - vlc <= A x <= uc + vuc, lx - vlx <= x <= ux + vux, v >= 0 (an
   elastic problem; a null weight array means QRN_DPAR_REPAIR_WEIGHT for every
   item; a negative weight keeps that bound hard; NaN is refused). Phase 2
   optimizes the task's own objective over the repaired bounds. What is left in
   the task: its bounds are the repaired ones (each relaxed side moved by its
   v), its solutions those of phase 2, and the information items
   QRN_DINF_REPAIR_PENALTY, QRN_DINF_REPAIR_OBJ, QRN_IINF_REPAIR_RELAXED_CONS
   and QRN_IINF_REPAIR_RELAXED_VARS. When no relaxation helps (only hard
   bounds conflict) it fails with QRN_RES_ERR_REPAIR_FAILED and changes nothing. */
QRN_API qrn_rescode QRN_CALL QRN_primalrepair(qrn_task_t task, const qrn_real *wlc, const qrn_real *wuc,
                                              const qrn_real *wlx, const qrn_real *wux);

/* An irreducible infeasible subset of the constraints and bounds, started from
   the Farkas certificate held by solution whichsol (QRN_RES_ERR_NO_CERTIFICATE
   when its status is not QRN_SOL_STA_PRIM_INFEAS_CER) and reduced by a
   deletion filter. *inftask receives a new task in the same environment with
   every constraint and variable of the original (same order and names, so
   that indexes match) and the linear data, but only the bounds in the set:
   every other bound is made infinite (the kept sides keep their values), and
   the objective is zero. Dropping any kept bound makes the new problem
   feasible. The caller deletes the new task. */
QRN_API qrn_rescode QRN_CALL QRN_getinfeasiblesubproblem(qrn_task_t task, qrn_int32 whichsol,
                                                         qrn_task_t *inftask);

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

/* ---- Reports on the analysis of a solved task (file formats' reports) ----
   sensitivityreport: the tables of the sensitivity analysis of the optimal
   basic solution (QRN_primalsensitivity for every finite bound of every
   constraint and variable, QRN_dualsensitivity for every c_j), with its
   codes when there is no such solution (QRN_RES_ERR_NO_BASIS, ...).
   infeasibilityreport: the constraint and variable bounds of the irreducible
   infeasible set that QRN_getinfeasiblesubproblem finds from the primal
   infeasibility certificate of solution whichsol, with each bound's
   multiplier in the certificate (QRN_RES_ERR_NO_CERTIFICATE without one). */
QRN_API qrn_rescode QRN_CALL QRN_sensitivityreport(qrn_task_t task, qrn_int32 whichstream);
QRN_API qrn_rescode QRN_CALL QRN_infeasibilityreport(qrn_task_t task, qrn_int32 whichstream, qrn_int32 whichsol);

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

/* ======================================================================= */
/* Batch optimization                                                      */
/* ======================================================================= */
/* Optimizes the numtask tasks task[0..numtask) concurrently on a pool of
   worker threads and returns when every one has ended. Each task is
   optimized exactly as QRN_optimizetrm would optimize it alone (its
   parameters, solutions, information items, last error, log and callback),
   on one of the worker threads: its stream functions and its callback are
   called on that thread, and those of different tasks may run at the same
   time. Free threads take the tasks in list order.
     israce      0: every task runs to its end. Not 0: a race: as soon as the
                 run of one task ends normally (response code and termination
                 code both QRN_RES_OK), every other running task stops with
                 termination code QRN_RES_TRM_BATCH_RACE (its solutions then
                 hold the last iterate, as after any stopped run) and the
                 tasks not yet started are not run.
     maxtime     wall-clock limit in seconds for the whole batch, counted
                 from the call: each run's time limit is the smaller of its
                 own (QRN_DPAR_TIME_LIMIT) and what is left of maxtime, and a
                 run stopped by it ends with QRN_RES_TRM_MAX_TIME. 0, a
                 negative value or one of at least QRN_INFINITY: no limit.
                 NaN is QRN_RES_ERR_BATCH_TIME.
     numthreads  number of worker threads, at most numtask; 0 means one per
                 core. Negative is QRN_RES_ERR_BATCH_NUM_THREADS. The batch
                 goes on with the threads that could be started
                 (QRN_RES_ERR_BATCH_THREAD_START when none could).
   A callback of any task that asks to stop stops the whole batch: every
   running task ends with QRN_RES_TRM_USER_CALLBACK, and the tasks not yet
   started are not run.
   Results for task k, in two arrays of numtask entries (either may be null):
     rcode[k]    the response code of its run, as QRN_optimizetrm returns it
                 (QRN_RES_ERR_NULL_TASK for a null handle), or
                 QRN_RES_ERR_BATCH_NOT_STARTED when the batch had stopped
                 (a race won, a callback's stop, maxtime over) before the
                 task's turn: such a task is left as it was.
     trmcode[k]  its termination code when rcode[k] is QRN_RES_OK; for a task
                 not started, why the batch stopped (QRN_RES_TRM_BATCH_RACE,
                 QRN_RES_TRM_USER_CALLBACK or QRN_RES_TRM_MAX_TIME); else
                 QRN_RES_OK.
   The call returns QRN_RES_OK once the tasks have run, whatever their own
   codes. Refused before anything runs, writing nothing (the message goes to
   env's error stream): a negative numtask (QRN_RES_ERR_NEGATIVE_COUNT), a
   null task array with numtask > 0 (QRN_RES_ERR_NULL_POINTER), a task listed
   twice (QRN_RES_ERR_BATCH_DUP_TASK; null handles are not compared), and the
   arguments above. The tasks may belong to any environment. While the batch
   runs, its tasks must be neither changed nor deleted. */
QRN_API qrn_rescode QRN_CALL QRN_optimizebatch(qrn_env_t env, qrn_int32 israce, qrn_real maxtime,
                                               qrn_int32 numthreads, qrn_int64 numtask, qrn_task_t *task,
                                               qrn_int32 *trmcode, qrn_int32 *rcode);

/* ======================================================================= */
/* Remote optimization                                                     */
/* ======================================================================= */
/* A task can be optimized by an optimization server (qrn-optserver; protocol
   in docs/remote.md). addr is "HOST:PORT" or "http://HOST:PORT"; accesstoken
   is the server's access token, "" for none. The task is sent whole (the
   binary task file with its parameters); the server runs QRN_optimizetrm on
   it and sends back the solutions, the information items, the response and
   termination codes and the log. A task with affine conic or disjunctive
   constraints or semidefinite variables cannot be sent
   (QRN_RES_ERR_WRITE_LOSES_CONES).
   Network failures each have their own code, with the server and the cause in
   the message: a malformed address QRN_RES_ERR_REMOTE_ADDRESS; no connection
   (after QRN_IPAR_REMOTE_RETRIES attempts, a short pause between them)
   QRN_RES_ERR_REMOTE_CONNECT; no answer within QRN_DPAR_REMOTE_TIMEOUT
   seconds QRN_RES_ERR_REMOTE_TIMEOUT; a server gone while the job ran
   QRN_RES_ERR_REMOTE_LOST; a garbled answer QRN_RES_ERR_REMOTE_PROTOCOL; the
   server's refusals QRN_RES_ERR_REMOTE_AUTH (token), _JOB_UNKNOWN (no such
   job, or its result was dropped), _REFUSED (malformed request or task file),
   _TOO_LARGE, _BUSY and _SERVER. A failing call leaves the task as it was.

   optimizermt sends the task, waits for the result and stores it as
   QRN_optimizetrm would: the solutions, the information items (those of the
   server's run, with QRN_DINF_TIME_REMOTE, QRN_DINF_REMOTE_QUEUE_TIME,
   QRN_IINF_REMOTE_ATTEMPTS, QRN_IINF_REMOTE_SOLVES and
   QRN_LIINF_REMOTE_BYTES_SENT added), *trmcode, and the server's log, which is
   written to the task's log stream as it arrives. While it waits, the
   callback gets QRN_CALLBACK_BEGIN, QRN_CALLBACK_ITERATION at most every
   QRN_DPAR_CALLBACK_INTERVAL seconds (with the task's information items as
   they were) and QRN_CALLBACK_END when the result is stored; a non-zero
   answer stops the remote job, whose result then ends with
   QRN_RES_TRM_USER_CALLBACK. When the server's run could not be made, the
   call fails with the server's response code and message. With a finite
   QRN_DPAR_TIME_LIMIT the wait ends after that limit plus
   QRN_DPAR_REMOTE_TIMEOUT (QRN_RES_ERR_REMOTE_TIMEOUT, the job is stopped). */
QRN_API qrn_rescode QRN_CALL QRN_optimizermt(qrn_task_t task, const char *addr, const char *accesstoken,
                                             qrn_int32 *trmcode);
/* Sends the task and returns at once: token (65 bytes) receives the job's
   token, at most 64 characters and a NUL: the server's id, '-', 32 hex
   digits. A load balancer routes by the server id (docs/remote.md). */
QRN_API qrn_rescode QRN_CALL QRN_asyncoptimize(qrn_task_t task, const char *addr, const char *accesstoken,
                                               char *token);
/* Asks the server to stop the job (it ends with QRN_RES_TRM_USER_CALLBACK,
   at once when it has not started); its result is still to be fetched. */
QRN_API qrn_rescode QRN_CALL QRN_asyncstop(qrn_task_t task, const char *addr, const char *accesstoken,
                                           const char *token);
/* *respavailable is 1 when the job has ended, with the response code of the
   server's run in *resp and its termination code in *trm; else 0 (and
   *resp, *trm QRN_RES_OK). The task is not changed. */
QRN_API qrn_rescode QRN_CALL QRN_asyncpoll(qrn_task_t task, const char *addr, const char *accesstoken,
                                           const char *token, qrn_int32 *respavailable, qrn_rescode *resp,
                                           qrn_rescode *trm);
/* As asyncpoll; when the job has ended, also stores its result in the task as
   optimizermt does (solutions and information only when *resp is
   QRN_RES_OK; the server's log goes to the log stream either way) and lets
   the server drop it. A result must fit the task's sizes
   (QRN_RES_ERR_SOL_SIZE). */
QRN_API qrn_rescode QRN_CALL QRN_asyncgetresult(qrn_task_t task, const char *addr, const char *accesstoken,
                                                const char *token, qrn_int32 *respavailable, qrn_rescode *resp,
                                                qrn_rescode *trm);
/* Makes later QRN_optimizetrm calls on this task run on the server at host
   (as optimizermt does; it sets QRN_SPAR_REMOTE_SERVER, which may also be set
   directly). host is an address as above, optionally with an access token
   before the host: "http://TOKEN@HOST:PORT". An empty host makes them local
   again. */
QRN_API qrn_rescode QRN_CALL QRN_putoptserverhost(qrn_task_t task, const char *host);

/* For the optimization server itself (qrn-optserver), not for applications:
   readtaskbuffer reads a binary task file from memory into the task (as
   QRN_readtask); writeremoteresult writes what optimizermt receives: the
   task's solutions and information items (when resp is QRN_RES_OK) with the
   given codes, seconds in the queue and from arrival to end, size of the
   request, message and log, through func. */
QRN_API qrn_rescode QRN_CALL QRN_readtaskbuffer(qrn_task_t task, const void *data, qrn_int64 size);
QRN_API qrn_rescode QRN_CALL QRN_writeremoteresult(qrn_task_t task, qrn_rescode resp, qrn_int32 trmcode,
                                                   qrn_real queuetime, qrn_real turnaround, qrn_int64 requestbytes,
                                                   const char *message, const char *log, qrn_write_fn func,
                                                   void *handle);

#ifdef __cplusplus
}
#endif

#endif /* QUARN_H */
