#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace brevant::samplehost {

inline constexpr double kPi = std::numbers::pi;

inline std::uint64_t mix(std::uint64_t x)
{
    x += 0x9e3779b97f4a7c15ULL;
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}

inline double unitOf(std::uint64_t bits)
{
    return static_cast<double>(bits >> 11) * 0x1.0p-53;
}

/// Numbers drawn from the engine and mapped here: the standard distributions differ between
/// standard libraries, and the same seed must give the same files everywhere. Each layer draws
/// from its own stream, so changing one layer leaves the others as they were.
class Random {
public:
    Random(std::uint64_t seed, std::uint64_t stream) : m_engine(mix(seed ^ mix(stream))) {}
    /// An engine seeded with `engineSeed` as it stands: the benchmark data were first drawn
    /// that way, and their files must stay the same.
    static Random withEngineSeed(std::uint64_t engineSeed) { return Random(engineSeed); }

    double uniform() { return unitOf(m_engine()); }
    double uniform(double lo, double hi) { return lo + (hi - lo) * uniform(); }
    /// In [lo, hi].
    int integer(int lo, int hi)
    {
        return std::min(hi, lo + static_cast<int>(uniform() * (hi - lo + 1)));
    }
    bool chance(double p) { return uniform() < p; }
    double normal()
    {
        const double u = 1.0 - uniform();
        return std::sqrt(-2.0 * std::log(u)) * std::cos(2 * kPi * uniform());
    }
    template <class T> const T& pick(const std::vector<T>& values)
    {
        return values[static_cast<std::size_t>(integer(0, static_cast<int>(values.size()) - 1))];
    }
    /// A direction (radians) and a distance in [lo, hi], drawn in that order. Callers draw one
    /// number per statement or through helpers like this one: the order in which function
    /// arguments are evaluated is the compiler's choice.
    std::pair<double, double> polar(double lo, double hi)
    {
        const double angle = uniform(0.0, 2 * kPi);
        return {angle, uniform(lo, hi)};
    }

private:
    explicit Random(std::uint64_t engineSeed) : m_engine(engineSeed) {}

    std::mt19937_64 m_engine;
};

/// Smooth value noise in [0, 1] (fractal sums of a few octaves), a pure function of its key and
/// position so that any point can be asked in any order.
class Noise {
public:
    Noise(std::uint64_t key, double frequency, int octaves = 3)
        : m_key(mix(key)), m_frequency(frequency), m_octaves(octaves)
    {
    }

    double at(double x, double y) const
    {
        double sum = 0.0;
        double norm = 0.0;
        double amplitude = 1.0;
        double frequency = m_frequency;
        for (int o = 0; o < m_octaves; ++o) {
            sum += amplitude * octave(x * frequency, y * frequency, m_key + o);
            norm += amplitude;
            amplitude *= 0.5;
            frequency *= 2.03;
        }
        return sum / norm;
    }
    /// The same noise spread over [0, 1]: sums of octaves crowd around one half.
    double spread(double x, double y) const
    {
        return std::clamp((at(x, y) - 0.5) * 2.6 + 0.5, 0.0, 1.0);
    }

private:
    static double corner(std::uint64_t key, std::int64_t ix, std::int64_t iy)
    {
        return unitOf(mix(key ^ mix(static_cast<std::uint64_t>(ix) * 0x9e3779b97f4a7c15ULL +
                                    static_cast<std::uint64_t>(iy))));
    }
    static double octave(double x, double y, std::uint64_t key)
    {
        const double fx = std::floor(x);
        const double fy = std::floor(y);
        const auto ix = static_cast<std::int64_t>(fx);
        const auto iy = static_cast<std::int64_t>(fy);
        const double tx = (x - fx) * (x - fx) * (3 - 2 * (x - fx));
        const double ty = (y - fy) * (y - fy) * (3 - 2 * (y - fy));
        const double a = corner(key, ix, iy);
        const double b = corner(key, ix + 1, iy);
        const double c = corner(key, ix, iy + 1);
        const double d = corner(key, ix + 1, iy + 1);
        return a + (b - a) * tx + (c - a) * ty + (a - b - c + d) * tx * ty;
    }

    std::uint64_t m_key;
    double m_frequency;
    int m_octaves;
};

} // namespace brevant::samplehost
