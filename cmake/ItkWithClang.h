// Debian's ITK knows the compiler that it was built with, GCC, and refuses every other. Included
// before everything else, this lets ITK's compiler check, which only reads macros, see GCC 12 where
// Clang is at work; afterwards all macros are Clang's own again.
#pragma once

#pragma push_macro("__clang__")
#pragma push_macro("__GNUC__")
#pragma push_macro("__GNUC_MINOR__")
#undef __clang__
#undef __GNUC__
#undef __GNUC_MINOR__
#define __GNUC__ 12
#define __GNUC_MINOR__ 2
#include <itk_compiler_detection.h>
#pragma pop_macro("__GNUC_MINOR__")
#pragma pop_macro("__GNUC__")
#pragma pop_macro("__clang__")
