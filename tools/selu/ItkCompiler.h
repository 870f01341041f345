// To be included before ITK's headers: lets Clang read them, too.
//
// Debian's ITK knows only the compiler that it was built with; Clang understands what its headers
// then take for granted, so for this one header it passes itself off as GCC.
#pragma once

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wbuiltin-macro-redefined"
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
#pragma clang diagnostic pop
#endif
