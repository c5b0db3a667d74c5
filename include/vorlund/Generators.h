/// \file
/// The former name of two headers, kept for programs that include it: PlasmaVideoGenerator.h and
/// RandomGenerator.h.
#pragma once

#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RandomGenerator.h>
