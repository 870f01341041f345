// The number that a value stands for.
#pragma once

#include <pxlib2core/Value.h>

namespace ORVA::Impl {

inline double NumericReading(CValue const& value) {
  switch (value.Type()) {
  case CValue::EnType::Double:
    return value.Double();
  case CValue::EnType::Long:
    return value.Long();
  case CValue::EnType::Bool:
    return value.Bool() ? 1.0 : 0.0;
  default:
    return 0.0;
  }
}

} // namespace ORVA::Impl
