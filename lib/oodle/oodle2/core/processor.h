// What the parse loop asks of the processor: copies in whole units, of which the caller may want only the
// front, and conditional moves. x86 has forms of its own; the portable ones are for every other processor,
// and for a build with CORVANE_PORTABLE, so that the tests run them on x86 too.
//
// A unit is loaded whole before any of it is stored, so that source and destination may overlap.
#pragma once

#if (defined(__x86_64__) || defined(__i386__)) && !defined(CORVANE_PORTABLE)
#include "oodle/oodle2/core/processor_x86.h"
#else
#include "oodle/oodle2/core/processor_portable.h"
#endif
