/**
 * \file
 * The library from C, and from every language and compiler that can call C: Delphi, Visual Basic, C#, Pascal.
 * This header includes all others of the folder vorlund_c. They are C99, also C++, and need no standard
 * library.
 */
#ifndef VORLUND_C_H
#define VORLUND_C_H

#include "vorlund_c/audio.h"
#include "vorlund_c/base.h"
#include "vorlund_c/classes.h"
#include "vorlund_c/convert.h"
#include "vorlund_c/decode.h"
#include "vorlund_c/event.h"
#include "vorlund_c/measure.h"
#include "vorlund_c/plugin.h"
#include "vorlund_c/resource.h"
#include "vorlund_c/session.h"
#include "vorlund_c/sink.h"
#include "vorlund_c/stream.h"
#include "vorlund_c/video.h"
#include "vorlund_c/write.h"

#endif
