/* SPDX-License-Identifier: MIT */
/**
 * \file
 * \brief libplcruntime for programs in C and whatever calls C: no type of another library, C89.
 *
 * Order of calls: plcruntime_open(), plcruntime_subscribe() for each variable that is to be refreshed again and
 * again, plcruntime_start(), then reads, writes and values as needed, plcruntime_close().
 *
 * VARIABLES are texts, "AREA:ADDRESS[xCOUNT][@STATION]", such as "9:100", "8:10.3", "14:200x2@3". Areas 0 to 7 hold
 * bits, 8 bits inside the words of area 9, 9 to 13 words of 16 bits, 14 double words. Without a station it is the
 * option's. TYPES say what the elements mean: "bit", "int16", "uint16", "int32", "uint32", "float32", "hex", "text",
 * "int64", "uint64", "float64", "bcd16", "bcd32". No type (NULL) is the plain one of the area: "bit", "uint16" or
 * "uint32". COUNT counts values of the type, of a text its characters: "9:100" as a float32 is two words, since 32-bit
 * types take one double word or two words, the low half first, and 64-bit types twice as many; a text takes a word for
 * two characters, the low byte first. All texts are UTF-8 and end with a zero byte.
 *
 * RESULTS of functions are an enum plcruntime_status, 0 for success, unless said otherwise; what went wrong is in
 * plcruntime_last_error(). No C++ exception leaves a function. A controller that is not there is no error here: the
 * runtime goes on trying, and what is asked meanwhile fails with a reason.
 *
 * THREADS. A runtime has one thread of its own. Between plcruntime_start() and plcruntime_close() any thread may call
 * any function, several at once too, but plcruntime_close(), which must be the last one. Callbacks come on the
 * runtime's own thread, one at a time and with no lock held: they may read, write, ask for values and switch stations,
 * but they must not wait, which would keep the link waiting, must not call plcruntime_close(), which is refused, and
 * must not throw. Those that are still due at the end come on the thread that calls plcruntime_close(), before that
 * returns; none comes later.
 *
 * There is one driver in a process, so one runtime at a time is started. After plcruntime_close() another one may be
 * opened, for another controller too: nothing of the old one is left.
 *
 * ABI: structures here never change. Enumerations grow at their ends, and are passed as int.
 */
#ifndef PLCRUNTIME_H
#define PLCRUNTIME_H

/* The names and the "(void)" are those of C. NOLINTBEGIN(readability-identifier-naming,modernize-redundant-void-arg) */
#include <stddef.h>
#include <stdint.h>

/** What libplcruntime.so shows to C. */
#define PLCRUNTIME_C_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

/** What a function returned. */
enum plcruntime_status {
    PLCRUNTIME_OK = 0,
    PLCRUNTIME_INVALID = -1,      /**< an argument, option, variable, type or value is wrong */
    PLCRUNTIME_WRONG_TIME = -2,   /**< not before the start, not after it, or not out of a callback */
    PLCRUNTIME_CANNOT_START = -3, /**< no driver, or another runtime is running in this process */
    PLCRUNTIME_FAULT = -4         /**< out of memory, or a fault in the library */
};

/** Why a request brought nothing. Nothing went out of those from PLCRUNTIME_REFUSED to PLCRUNTIME_PURGED. */
enum plcruntime_failure {
    PLCRUNTIME_NO_FAILURE = 0,
    PLCRUNTIME_REFUSED = 1,        /**< this cannot be asked for */
    PLCRUNTIME_NOT_RUNNING = 2,    /**< the runtime is not running */
    PLCRUNTIME_NOT_TRIED = 3,      /**< the controller was found out of reach before */
    PLCRUNTIME_STATION_OFF = 4,    /**< its station is switched off */
    PLCRUNTIME_NOT_TAKEN = 5,      /**< the driver refuses it */
    PLCRUNTIME_DISCARDED = 6,      /**< its station was switched off while it waited */
    PLCRUNTIME_REPLACED = 7,       /**< a newer write to the same elements took its place */
    PLCRUNTIME_PURGED = 8,         /**< it went with another request that was given up */
    PLCRUNTIME_NOT_CONNECTED = 9,  /**< no connection at its last try */
    PLCRUNTIME_NO_REPLY = 10,      /**< within the time-out */
    PLCRUNTIME_EXCEPTION = 11,     /**< the controller answered with a Modbus exception */
    PLCRUNTIME_BAD_REPLY = 12,     /**< the reply could not be used, or answers something else */
    PLCRUNTIME_STOPPED = 13,       /**< the runtime was closed before it ended */
    PLCRUNTIME_OUT_OF_STEP = 14,   /**< the driver's list of requests is not what it must be */
    PLCRUNTIME_NOT_REPORTED = 15,  /**< the driver did not report the end of a read */
    PLCRUNTIME_ACKNOWLEDGED = 16,  /**< the controller is still at work on it; it was not sent again */
    PLCRUNTIME_CLOSED = 17,        /**< the controller closed the connection instead of answering */
    PLCRUNTIME_OTHER_FAILURE = 255 /**< of a kind that has no number here; its words tell */
};

/** How good a refreshed value is. Show it as current only when it is PLCRUNTIME_FRESH. */
enum plcruntime_state {
    PLCRUNTIME_NEVER_READ = 0,  /**< the controller has not answered yet; all elements are 0 */
    PLCRUNTIME_OFF = 1,         /**< its station is switched off; the value is old */
    PLCRUNTIME_FAILED = 2,      /**< the last attempt to read it failed; the value is old */
    PLCRUNTIME_STALE = 3,       /**< not refreshed for longer than the option stale_after_ms */
    PLCRUNTIME_UNCONFIRMED = 4, /**< a write to it is on its way or has failed since it was read last */
    PLCRUNTIME_FRESH = 5        /**< as the controller answered */
};

/** Kinds of requests that wait, for plcruntime_queued(). */
enum plcruntime_kind { PLCRUNTIME_WRITES = 0, PLCRUNTIME_READS = 1 };

/** A runtime. */
typedef struct plcruntime plcruntime;

/** A value with its state and age. */
typedef struct plcruntime_value plcruntime_value;

/** How a write or a read ended. */
typedef struct plcruntime_result plcruntime_result;

/** One setting, both texts. */
typedef struct plcruntime_option {
    const char* key;
    const char* value;
} plcruntime_option;

/**
 * Called when a subscribed variable shows another value, state or reason of failure than before; at first it was
 * never read. A growing age is no change.
 * \param variable as plcruntime_subscribe() returned it
 * \param value    the library's, valid until the callback returns
 */
typedef void (*plcruntime_value_callback)(void* context, int variable, const plcruntime_value* value);

/**
 * Called exactly once for each write and read that was taken, however it ended.
 * \param result the library's, valid until the callback returns
 */
typedef void (*plcruntime_done_callback)(void* context, const plcruntime_result* result);

/** \return the version of the library, such as "0.1.0" */
PLCRUNTIME_C_API const char* plcruntime_version(void);

/** \return what went wrong in this thread's last call that failed, and what to do; valid until its next call */
PLCRUNTIME_C_API const char* plcruntime_last_error(void);

/** \return a plcruntime_failure in words, without the particulars of one that happened; never NULL */
PLCRUNTIME_C_API const char* plcruntime_failure_name(int failure);

/** \return "fresh", "stale", ...; never NULL */
PLCRUNTIME_C_API const char* plcruntime_state_name(int state);

/**
 * Makes a runtime that is not started yet.
 *
 * Options, with their defaults: host 127.0.0.1, a name or address; port 502; station 1, 0..255, of variables that name
 * none; multi_station 0, 1 for several stations on one link; remote_mode 0, 1 for remote frames in place of Modbus
 * TCP; timeout_ms 300; retries 3; max_block_words 63, 2..125; poll_ms 100, from one refresh of all subscribed
 * variables to the next at least; gap_ms 0, before each further request; stale_after_ms 2000; station_pause_ms 1000,
 * how long one of several stations that does not answer is left alone at first; driver, the path of libplcdriver.so,
 * which is looked for when it is not given.
 *
 * \param options ends with one whose key is NULL; NULL: all defaults
 * \param runtime set to the runtime, or to NULL. plcruntime_close() frees it
 */
PLCRUNTIME_C_API int plcruntime_open(const plcruntime_option* options, plcruntime** runtime);

/**
 * Before plcruntime_start(): refreshes a variable again and again.
 * \param type     what plcruntime_value_...() make of its elements; may be NULL
 * \param callback may be NULL; then plcruntime_get() tells the value
 * \return the variable's number, 0 and up; a plcruntime_status, which is negative, when it is refused
 */
PLCRUNTIME_C_API int plcruntime_subscribe(plcruntime* runtime, const char* variable, const char* type,
                                          plcruntime_value_callback callback, void* context);

/** Loads the driver and starts the runtime's thread, which connects and reconnects by itself. */
PLCRUNTIME_C_API int plcruntime_start(plcruntime* runtime);

/**
 * Ends the thread and whatever waits, with PLCRUNTIME_STOPPED, and frees the runtime. Refused out of a callback; then
 * nothing is freed. NULL does nothing.
 */
PLCRUNTIME_C_API int plcruntime_close(plcruntime* runtime);

/**
 * Queues a read of what the controller holds now, and returns at once.
 * \param callback called once if this returns PLCRUNTIME_OK, maybe before it returns; not at all otherwise
 */
PLCRUNTIME_C_API int plcruntime_read(plcruntime* runtime, const char* variable, const char* type,
                                     plcruntime_done_callback callback, void* context);

/**
 * Queues a write of elements as they are and returns at once. A later write to the same elements replaces one that
 * waits.
 * \param elements one for each of the variable's elements: 0 or 1 for bits, 0..65535 for words
 * \param callback called once if this returns PLCRUNTIME_OK, maybe before it returns; not at all otherwise. May be NULL
 */
PLCRUNTIME_C_API int plcruntime_write(plcruntime* runtime, const char* variable, const uint32_t* elements,
                                      size_t count, plcruntime_done_callback callback, void* context);

/**
 * The same with one number: a variable that holds one value of the type.
 * \param value must fit the type; for an integer type without a fraction
 */
PLCRUNTIME_C_API int plcruntime_write_number(plcruntime* runtime, const char* variable, const char* type,
                                             double value, plcruntime_done_callback callback, void* context);

/** The same with a text, which the variable's elements must hold; the rest of them is filled with zero bytes. */
PLCRUNTIME_C_API int plcruntime_write_text(plcruntime* runtime, const char* variable, const char* text,
                                           plcruntime_done_callback callback, void* context);

/**
 * Switches a station, 0..255, off (0) or on (1). Off: what waits for it fails, new requests fail, and its variables
 * keep their old values. On: it is tried at once; nothing of what has failed goes out.
 */
PLCRUNTIME_C_API int plcruntime_switch_station(plcruntime* runtime, int station, int on);

/**
 * \param station -1: all
 * \param kind    a plcruntime_kind
 * \return how many requests have not ended; a long write or read is several. Negative: a plcruntime_status
 */
PLCRUNTIME_C_API int plcruntime_queued(plcruntime* runtime, int station, int kind);

/** \return 1 when the runtime has a connection, 0 when not; negative: a plcruntime_status */
PLCRUNTIME_C_API int plcruntime_is_connected(plcruntime* runtime);

/**
 * Tells what is held of a subscribed variable now; nothing is sent.
 * \param value set to a value that plcruntime_free_value() frees, or to NULL
 */
PLCRUNTIME_C_API int plcruntime_get(plcruntime* runtime, int variable, plcruntime_value** value);

/** Only for what plcruntime_get() made. NULL does nothing. */
PLCRUNTIME_C_API void plcruntime_free_value(plcruntime_value* value);

/** \return a plcruntime_state */
PLCRUNTIME_C_API int plcruntime_value_state(const plcruntime_value* value);

/** \return milliseconds since the controller's answer; -1 before the first one */
PLCRUNTIME_C_API int64_t plcruntime_value_age_ms(const plcruntime_value* value);

/** \return when that came, in milliseconds since 1970 UTC by the system's clock; -1 before the first one */
PLCRUNTIME_C_API int64_t plcruntime_value_time_ms(const plcruntime_value* value);

/** \return a plcruntime_failure: why the last attempt to read it failed */
PLCRUNTIME_C_API int plcruntime_value_failure(const plcruntime_value* value);

/** \return the same in words, "" when it did not fail; valid as long as the value */
PLCRUNTIME_C_API const char* plcruntime_value_failure_text(const plcruntime_value* value);

/** \return the number of elements: bits, words or double words */
PLCRUNTIME_C_API size_t plcruntime_value_elements(const plcruntime_value* value);

/** \return element \a index as it is, 0 where there is none */
PLCRUNTIME_C_API uint32_t plcruntime_value_element(const plcruntime_value* value, size_t index);

/** \return how many values of the type the elements hold; of a text its characters */
PLCRUNTIME_C_API size_t plcruntime_value_count(const plcruntime_value* value);

/** \return value \a index of the type as a number; 0 where there is none, and for a text */
PLCRUNTIME_C_API double plcruntime_value_double(const plcruntime_value* value, size_t index);

/** \return the same as an integer; a fraction is cut off, and what is no number or does not fit is 0 */
PLCRUNTIME_C_API int64_t plcruntime_value_int64(const plcruntime_value* value, size_t index);

/** \return all values of the type as a person reads them; a text without quotes and without zero bytes at its end.
 *          Valid as long as the value */
PLCRUNTIME_C_API const char* plcruntime_value_text(const plcruntime_value* value);

/** \return a plcruntime_failure; PLCRUNTIME_NO_FAILURE: the write was confirmed, the read is done. A broadcast, which
 *          nobody confirms, has no failure when it was sent */
PLCRUNTIME_C_API int plcruntime_result_failure(const plcruntime_result* result);

/** \return the same in words, "" when it did not fail; valid as long as the result */
PLCRUNTIME_C_API const char* plcruntime_result_failure_text(const plcruntime_result* result);

/** \return the Modbus exception code of PLCRUNTIME_EXCEPTION; otherwise 0 */
PLCRUNTIME_C_API int plcruntime_result_exception(const plcruntime_result* result);

/** \return 1 when it failed and no frame went out for it: the controller cannot have carried it out; otherwise 0 */
PLCRUNTIME_C_API int plcruntime_result_unsent(const plcruntime_result* result);

/** \return what a read brought; NULL for a write and where it failed. Valid as long as the result */
PLCRUNTIME_C_API const plcruntime_value* plcruntime_result_value(const plcruntime_result* result);

#ifdef __cplusplus
}
#endif

/* NOLINTEND(readability-identifier-naming,modernize-redundant-void-arg) */
#endif
