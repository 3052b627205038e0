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
  X(QRN_RES_ERR_PARAM_INDEX, 1500, "A parameter identifier is out of range.")                     \
  X(QRN_RES_ERR_PARAM_NAME, 1501, "No parameter has the given name.")                             \
  X(QRN_RES_ERR_PARAM_VALUE, 1502, "A parameter value is outside the parameter's allowed range.") \
  X(QRN_RES_ERR_PARAM_TYPE, 1503, "The parameter has another kind than the call expects.")        \
  X(QRN_RES_ERR_INF_INDEX, 1600, "An information item identifier is out of range.")               \
  X(QRN_RES_ERR_UNKNOWN_KEY, 1601, "The text names no constant of the requested kind.")

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

/* ---- data formats accepted by QRN_writedatahandle ------------------------ */
enum qrn_dataformat_e {
  QRN_DATA_FORMAT_EXTENSION = 0, /* from a file name's extension; not for handles */
  QRN_DATA_FORMAT_TEXT = 1       /* own text format (.qtx): "qrntext 1", then counted sections, one item per line */
};

enum qrn_compress_e {
  QRN_COMPRESS_NONE = 0
};

/* ---- callback caller codes --------------------------------------------- */
enum qrn_callback_e {
  QRN_CALLBACK_BEGIN = 0,
  QRN_CALLBACK_ITERATION = 1,
  QRN_CALLBACK_END = 2
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
/* QRN_PARAMETERS_END */

/* QRN_INFORMATION_BEGIN: information item identifiers. */
#define QRN_DINF_COUNT 111
#define QRN_IINF_COUNT 117
#define QRN_LIINF_COUNT 21
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

/* Writes the task's problem in format (qrn_dataformat_e) through func. */
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

QRN_API qrn_rescode QRN_CALL QRN_getdouinf(qrn_task_t task, qrn_int32 whichdinf, qrn_real *dvalue);
QRN_API qrn_rescode QRN_CALL QRN_getintinf(qrn_task_t task, qrn_int32 whichiinf, qrn_int32 *ivalue);
QRN_API qrn_rescode QRN_CALL QRN_getlintinf(qrn_task_t task, qrn_int32 whichliinf, qrn_int64 *ivalue);
QRN_API qrn_rescode QRN_CALL QRN_getprobtype(qrn_task_t task, qrn_int32 *probtype);

/* ======================================================================= */
/* Names                                                                   */
/* ======================================================================= */
/* Names are UTF-8, unique per kind of item; an empty name removes it. */
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
/* Write the name and a NUL into a buffer of sizename bytes (QRN_RES_ERR_TOO_SMALL
   when it does not fit). */
QRN_API qrn_rescode QRN_CALL QRN_getconname(qrn_task_t task, qrn_int32 i, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getvarname(qrn_task_t task, qrn_int32 j, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getconename(qrn_task_t task, qrn_int32 k, qrn_int32 sizename, char *name);
QRN_API qrn_rescode QRN_CALL QRN_getobjname(qrn_task_t task, qrn_int32 sizeobjname, char *objname);
QRN_API qrn_rescode QRN_CALL QRN_gettaskname(qrn_task_t task, qrn_int32 sizetaskname, char *taskname);
/* Lookup by name in constant time: *asgn is 1 when an item has the name and 0
   otherwise; *index is that item's index, or -1. A missing name is not an error. */
QRN_API qrn_rescode QRN_CALL QRN_getconnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index);
QRN_API qrn_rescode QRN_CALL QRN_getvarnameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                 qrn_int32 *index);
QRN_API qrn_rescode QRN_CALL QRN_getconenameindex(qrn_task_t task, const char *name, qrn_int32 *asgn,
                                                  qrn_int32 *index);
/* Name generation: item subj[k] gets the name made from fmt with the index
   tuple of k in the shape dims (or of sp[k], a linear position in dims, when sp
   is given). In fmt each "{}" takes the next index, counted in row-major order
   over dims; "{{" and "}}" stand for braces. For a dimension listed in
   namedaxisidxs (in order), the index is replaced by the next block of
   dims[d] texts of names. */
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
/* Reports to whichstream the names that are not of kind nametype (qrn_nametype_e). */
QRN_API qrn_rescode QRN_CALL QRN_analyzenames(qrn_task_t task, qrn_int32 whichstream, qrn_int32 nametype);

/* ======================================================================= */
/* Parameters                                                              */
/* ======================================================================= */

QRN_API qrn_rescode QRN_CALL QRN_putdouparam(qrn_task_t task, qrn_int32 param, qrn_real parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putintparam(qrn_task_t task, qrn_int32 param, qrn_int32 parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putstrparam(qrn_task_t task, qrn_int32 param, const char *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getdouparam(qrn_task_t task, qrn_int32 param, qrn_real *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getintparam(qrn_task_t task, qrn_int32 param, qrn_int32 *parvalue);
QRN_API qrn_rescode QRN_CALL QRN_getstrparamlen(qrn_task_t task, qrn_int32 param, qrn_int32 *len);
/* Writes at most maxlen - 1 bytes and a NUL; *len receives the bytes written. */
QRN_API qrn_rescode QRN_CALL QRN_getstrparam(qrn_task_t task, qrn_int32 param, qrn_int32 maxlen,
                                             qrn_int32 *len, char *parvalue);
/* Number of parameters of kind partype (qrn_parametertype_e). */
QRN_API qrn_rescode QRN_CALL QRN_getnumparam(qrn_task_t task, qrn_int32 partype, qrn_int32 *numparam);
QRN_API qrn_rescode QRN_CALL QRN_putnadouparam(qrn_task_t task, const char *paramname, qrn_real parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putnaintparam(qrn_task_t task, const char *paramname, qrn_int32 parvalue);
QRN_API qrn_rescode QRN_CALL QRN_putnastrparam(qrn_task_t task, const char *paramname, const char *parvalue);
/* Sets a parameter of any kind from its text value. */
QRN_API qrn_rescode QRN_CALL QRN_putparam(qrn_task_t task, const char *parname, const char *parvalue);
/* Identifier of the parameter of that name (QRN_RES_ERR_PARAM_NAME if none). */
QRN_API qrn_rescode QRN_CALL QRN_isdouparname(qrn_task_t task, const char *parname, qrn_int32 *param);
QRN_API qrn_rescode QRN_CALL QRN_isintparname(qrn_task_t task, const char *parname, qrn_int32 *param);
QRN_API qrn_rescode QRN_CALL QRN_isstrparname(qrn_task_t task, const char *parname, qrn_int32 *param);
/* Constants from their names, e.g. "QRN_CONE_QUAD" or "QUAD", "QRN_SK_BASIS" or "BASIS". */
QRN_API qrn_rescode QRN_CALL QRN_strtoconetype(qrn_task_t task, const char *str, qrn_int32 *conetype);
QRN_API qrn_rescode QRN_CALL QRN_strtosk(qrn_task_t task, const char *str, qrn_int32 *sk);
/* Sets every parameter to its default. */
QRN_API qrn_rescode QRN_CALL QRN_setdefaults(qrn_task_t task);

#ifdef __cplusplus
}
#endif

#endif /* QUARN_H */
