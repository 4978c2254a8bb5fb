#pragma once

#include "host/GridSettingsService.h"

#include <array>
#include <filesystem>
#include <string_view>

namespace brevant::host::local {

/// The contour-grid settings of the reference host: section "ContourGrid" of the current
/// region's settings. The six parameters, in order, and their defaults:
///  1. "XSpacing", degrees between grid columns (0.01, about a kilometre);
///  2. "YSpacing", degrees between grid rows (0.01);
///  3. "XOffset", degrees from the west edge of the boundary's envelope to the first column (0);
///  4. "YOffset", degrees from its south edge to the first row (0);
///  5. "Margin", degrees the envelope is widened by on every side (0);
///  6. "MaxPoints", the most grid points over the envelope that a build may make (5,000,000),
///     so that a spacing mistyped by a factor of a hundred fails instead of filling the disk.
/// A value that is not a number fails with error 13.
class LocalGridSettingsService : public GridSettingsService {
public:
    static constexpr std::array<std::string_view, 6> kKeys{"XSpacing", "YSpacing", "XOffset",
                                                           "YOffset",  "Margin",   "MaxPoints"};
    static constexpr std::array<double, 6> kDefaults{0.01, 0.01, 0.0, 0.0, 0.0, 5'000'000.0};

    explicit LocalGridSettingsService(std::filesystem::path root) : m_root(std::move(root)) {}
    void GetGridParameters(double& parameter1, double& parameter2, double& parameter3,
                           double& parameter4, double& parameter5, double& parameter6) override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
