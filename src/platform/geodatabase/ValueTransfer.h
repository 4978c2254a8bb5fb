#pragma once

#include <cstdint>
#include <functional>

namespace brevant::platform::geodatabase {

class FeatureClass;

/// How many target features took a value, and how.
struct TransferCounts {
    /// From a source shape that contains the feature (or, with containedOnly, touches it).
    int64_t contained = 0;
    /// From the nearest source shape, at a distance above 0.
    int64_t nearest = 0;
    /// Took no value and kept their old one.
    int64_t unmatched = 0;
};

/// Copies, into field `targetField` of every target feature, field `sourceField` of the source
/// shape that contains the feature; when none does, of the nearest source shape and, with
/// `containedOnly`, only when that shape is at distance exactly 0 (the feature lies on its
/// edge). Only source shapes whose envelope meets the target's extent are candidates. Features
/// that get no value keep their old one. Each feature is stored as it goes, so
/// a failure leaves the features before it changed. `progress` is called with the features
/// done and their total.
TransferCounts transferValues(FeatureClass& target, const FeatureClass& source, int targetField,
                              int sourceField, bool containedOnly,
                              const std::function<void(int64_t, int64_t)>& progress = {});

} // namespace brevant::platform::geodatabase
