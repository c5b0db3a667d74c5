/// \file
/// The former name of five headers, kept for programs that include it: AudioClip.h, Bitmap.h, MediaControl.h,
/// PropertyPage.h and VideoClip.h.
#pragma once

#include <vorlund/AudioClip.h>
#include <vorlund/Bitmap.h>
#include <vorlund/MediaControl.h>
#include <vorlund/PropertyPage.h>
#include <vorlund/VideoClip.h>
