// How an analysis treats what reaches over the edge of the image.
//
//   auto const edges = EEdgeTreatment::Periodic;    // beyond one side comes the other
#pragma once

namespace ORVA {

/// The framework's edge treatments.
struct EEdgeTreatment {
  /// The edge treatments.
  enum EnEdgeTreatmentId {
    NoEdgeTreatment = 0, ///< nothing is done
    MinusSampling = 1,   ///< only what lies wholly inside counts
    Mirroring = 2,       ///< the image continues mirrored
    Periodic = 3,        ///< the image wraps around
    PlusSampling = 4     ///< the surroundings are known; nothing is done
  };
};

} // namespace ORVA
