#pragma once

#include <cstdint>
#include <vector>

namespace brevant::platform::automation {

class Variant;

/// A one- or two-dimensional array of variants with per-dimension lower bounds, as the host's
/// safe arrays are. Elements are stored row-major: (i, j) of a two-dimensional array is at
/// (i - lower0) * count1 + (j - lower1).
class VariantArray {
public:
    struct Bound {
        int32_t lower = 0;
        int32_t count = 0;
        bool operator==(const Bound&) const = default;
    };

    VariantArray();
    /// A one-dimensional array of `count` empty elements from `lower`.
    explicit VariantArray(int32_t count, int32_t lower = 0);
    /// A two-dimensional array of rows x columns empty elements.
    VariantArray(Bound rows, Bound columns);
    /// A zero-based one-dimensional array of the given values.
    static VariantArray of(std::vector<Variant> values);

    int dimensions() const { return static_cast<int>(m_bounds.size()); }
    /// Lower and upper bound of a dimension (1 or 2); throws error 9 for another dimension.
    int32_t lowerBound(int dimension = 1) const;
    int32_t upperBound(int dimension = 1) const;
    std::size_t size() const;

    /// Element access by index; throws error 9 (subscript out of range) outside the bounds or
    /// with the wrong number of indexes.
    Variant& at(int32_t i);
    const Variant& at(int32_t i) const;
    Variant& at(int32_t i, int32_t j);
    const Variant& at(int32_t i, int32_t j) const;

    /// All elements in storage order.
    const std::vector<Variant>& elements() const;
    std::vector<Variant>& elements();

    bool operator==(const VariantArray& other) const;

private:
    std::vector<Bound> m_bounds;
    std::vector<Variant> m_items;
};

} // namespace brevant::platform::automation
