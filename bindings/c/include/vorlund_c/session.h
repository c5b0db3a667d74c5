/**
 * \file
 * The life of the library, and its diagnostic output.
 *
 * \code{.c}
 * if (vorlund_open(VORLUND_OPEN_INSTALLED_PLUGINS) != VORLUND_OK) return;
 * // Everything else.
 * vorlund_close();
 * \endcode
 */
#ifndef VORLUND_C_SESSION_H
#define VORLUND_C_SESSION_H

#include "base.h"

#ifdef __cplusplus
extern "C" {
#endif

/** For vorlund_open. */
enum {
    /** The plug-ins that are installed beside the library are loaded. */
    VORLUND_OPEN_INSTALLED_PLUGINS = 1,
    /** No message box shows a bug; it goes to the debugger output only. */
    VORLUND_OPEN_WITHOUT_BOXES = 2
};

/**
 * Opens the library. All functions but those of base.h, those that say so and the folders of plug-ins need
 * that, and give VORLUND_ERROR_NOT_OPEN otherwise. May be called again while it is open: it then only counts,
 * and as many calls of vorlund_close are needed. `flags` of such a call are ignored.
 *
 * Fails with what a plug-in raises as it is loaded; the library is closed then.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_open(uint32_t flags);

/**
 * Closes the library. The last call frees every handle that is left, ends what plays and records, and unloads
 * the plug-ins. VORLUND_ERROR_BUSY while another function is under way, also from inside a callback: the
 * library then stays open. VORLUND_ERROR_NOT_OPEN when it is closed.
 *
 * A program that ends without it loses nothing but what was not yet written.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_close(void);

/** Whether the library is open, 1 or 0. */
VORLUND_C_API int32_t VORLUND_CALL vorlund_is_open(int32_t* is_open);

/** Destinations of diagnostic texts. */
enum {
    VORLUND_MESSAGE_OUTPUT = 0, /**< the debugger output, or the system log */
    VORLUND_MESSAGE_BOX = 1,    /**< a message box, which bugs show */
    VORLUND_MESSAGE_STDOUT = 2,
    VORLUND_MESSAGE_STDERR = 3
};

/** Gets what would have gone to a destination. From any thread, and from several at once. */
typedef void(VORLUND_CALL* vorlund_message_handler)(void* user, int32_t destination, const char* text);

/**
 * Sends what is for a destination to a function instead; null for the default. It is kept until it is
 * replaced, and works also while the library is closed. A message that is on its way may still reach the
 * former one.
 */
VORLUND_C_API int32_t VORLUND_CALL vorlund_set_message_handler(int32_t destination,
                                                               vorlund_message_handler handler, void* user);

#ifdef __cplusplus
}
#endif

#endif
