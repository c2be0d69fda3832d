// What the parse loop needs from the processor: conditional moves, and copies of whole units, of which the
// caller may want only the front. x86 has its own forms. The portable forms are for all other processors and
// for builds with CORVANE_PORTABLE, so that the tests run them on x86 too.
//
// A unit is loaded whole before any of it is stored, so source and destination may overlap.
#pragma once

#if (defined(__x86_64__) || defined(__i386__)) && !defined(CORVANE_PORTABLE)
#include "oodle/oodle2/core/processor_x86.h"
#else
#include "oodle/oodle2/core/processor_portable.h"
#endif
