/**
 * \file
 * Events, which threads wait for, and timers, which are events that are set periodically. Any number of
 * threads may use one at once.
 *
 * \code{.c}
 * vorlund_event timer, event;
 * if (vorlund_timer_create(5, &timer) != VORLUND_OK || vorlund_event_create(&event) != VORLUND_OK) return;
 * vorlund_timer_start(timer);
 * printf("%d\n", (int)vorlund_event_wait(timer, 10000)); // prints 0
 * printf("%d\n", (int)vorlund_event_wait(event, 1));     // prints 16
 * vorlund_timer_stop(timer);
 * vorlund_release(timer);
 * vorlund_release(event);
 * \endcode
 */
#ifndef VORLUND_C_EVENT_H
#define VORLUND_C_EVENT_H

#include "base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** An event that stays set until it is reset; or a timer. */
typedef struct vorlund_event_object* vorlund_event;

/** For time limits: none. */
#define VORLUND_WITHOUT_LIMIT (-1)

/** The most events that a wait takes. */
#define VORLUND_MOST_EVENTS 64

VORLUND_C_API int32_t VORLUND_CALL vorlund_event_create(vorlund_event* event);
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_set(vorlund_event event);
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_reset(vorlund_event event);
/** 1 while the event is set, else 0. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_is_set(vorlund_event event, int32_t* is_set);

/**
 * Waits until the event is set, at most `milliseconds`; 0 only looks. VORLUND_ERROR_TIMEOUT when it was not
 * set. The library cannot be closed meanwhile. A thread goes on waiting for an event whose handle is freed.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_wait(vorlund_event event, int32_t milliseconds);

/**
 * Waits for one of `count` events, 1 to VORLUND_MOST_EVENTS; `index` gets its place, the lowest when several
 * are set.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_wait_any(const vorlund_event* events, uint32_t count,
                                                          int32_t milliseconds, uint32_t* index);
/** Waits until all of them are set at the same time. None may be there twice. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_wait_all(const vorlund_event* events, uint32_t count,
                                                          int32_t milliseconds);

/** Called on a thread of the library each time that the event was set; the event is reset before. */
typedef void(VORLUND_CALL* vorlund_event_callback)(void* user, vorlund_event event);

/**
 * Calls a function whenever the event is set, until null is given or the handle is freed. A call that has
 * begun before may still be under way then; from inside the call both are allowed. An event has one such
 * function at a time.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_event_on_set(vorlund_event event, vorlund_event_callback callback,
                                                        void* user);

/** A timer, which sets itself every `milliseconds`, 1 to 2,147,483; it does not run at first. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_timer_create(uint32_t milliseconds, vorlund_event* timer);
/** Starts and stops a timer. VORLUND_ERROR_ARGUMENT for an event that is none. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_timer_start(vorlund_event timer);
VORLUND_C_API int32_t VORLUND_CALL vorlund_timer_stop(vorlund_event timer);

#ifdef __cplusplus
}
#endif

#endif
