// How GoogleTest prints the library's values.
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2image/Size.h>

#include <ostream>

namespace ORVA {

template <class T>
void PrintTo(CTriple<T> const& a, std::ostream* out) {
  *out << '(' << a.x << ", " << a.y << ", " << a.z << ')';
}

inline void PrintTo(CSize const& size, std::ostream* out) {
  *out << size.Dim() << "D " << size.x << " x " << size.y << " x " << size.z;
}

} // namespace ORVA
