#include "platform/geometry/FeatureIndex.h"

#include "geos/GeosContext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace brevant::platform::geometry {

namespace {

// Children per node. Every node has exactly this many child slots (unused ones hold an inverted
// box that nothing meets), so a node is visited by one branch-free pass over its slots.
constexpr std::uint32_t Fanout = 16;
constexpr std::uint32_t NoShape = std::numeric_limits<std::uint32_t>::max();
// Edges per chunk: a chunk's box lets the crossing test and the distance scan pass over runs of
// edges far from the query point.
constexpr std::uint32_t ChunkEdges = 16;
// Chunks of one shape whose vertices are fetched together before they are read.
constexpr std::size_t BatchChunks = 16;
constexpr double Infinity = std::numeric_limits<double>::infinity();

// Memory, not arithmetic, bounds point queries: a random point costs a cache miss for every
// structure it reaches beyond the last-level cache. Tree and chunk boxes are therefore kept
// in single precision, rounded outwards so that they still hold what they bound, which keeps
// everything a query scans, except the vertices themselves, within a few megabytes.
float roundDown(double v)
{
    const auto f = static_cast<float>(v);
    return static_cast<double>(f) > v ? std::nextafter(f, -std::numeric_limits<float>::infinity())
                                      : f;
}

float roundUp(double v)
{
    const auto f = static_cast<float>(v);
    return static_cast<double>(f) < v ? std::nextafter(f, std::numeric_limits<float>::infinity())
                                      : f;
}

struct Box {
    double xmin = 0.0;
    double ymin = 0.0;
    double xmax = 0.0;
    double ymax = 0.0;

    static Box of(const Envelope& e) { return {e.xmin(), e.ymin(), e.xmax(), e.ymax()}; }
    bool contains(const Point& p) const
    {
        return xmin <= p.x && p.x <= xmax && ymin <= p.y && p.y <= ymax;
    }
    bool contains(const Box& o) const
    {
        return xmin <= o.xmin && o.xmax <= xmax && ymin <= o.ymin && o.ymax <= ymax;
    }
    bool intersects(const Box& o) const
    {
        return o.xmin <= xmax && xmin <= o.xmax && o.ymin <= ymax && ymin <= o.ymax;
    }
    Box united(const Box& o) const
    {
        return {std::min(xmin, o.xmin), std::min(ymin, o.ymin), std::max(xmax, o.xmax),
                std::max(ymax, o.ymax)};
    }
    double distance2(const Point& p) const
    {
        const double dx = std::max(std::max(xmin - p.x, p.x - xmax), 0.0);
        const double dy = std::max(std::max(ymin - p.y, p.y - ymax), 0.0);
        return dx * dx + dy * dy;
    }
    double distance2(const Box& o) const
    {
        const double dx = std::max({0.0, o.xmin - xmax, xmin - o.xmax});
        const double dy = std::max({0.0, o.ymin - ymax, ymin - o.ymax});
        return dx * dx + dy * dy;
    }
};

// Edges between vertices first..last of the shared coordinate array (first == last for a lone
// point), inside an outward-rounded box.
struct Chunk {
    float xmin;
    float ymin;
    float xmax;
    float ymax;
    std::uint32_t first;
    std::uint32_t last;

    Box box() const { return {xmin, ymin, xmax, ymax}; }
};

// Box distances and exact distances are rounded separately; a box is only passed over when it
// is farther than the best distance by more than rounding could explain, so equal distances are
// all seen and the lowest position wins.
double pruneBound(double best2)
{
    return best2 + best2 * 1e-12;
}

// ---- Exact orientation: the sign of (b - a) x (c - a), as GEOS's robust predicate decides.

void twoSum(double a, double b, double& sum, double& error)
{
    sum = a + b;
    const double bv = sum - a;
    const double av = sum - bv;
    error = (a - av) + (b - bv);
}

// Sums the six products of the expanded determinant as an exact floating-point expansion; the
// sign of its largest component is the sign of the determinant.
int exactOrientation(const Point& a, const Point& b, const Point& c)
{
    const double factors[6][2] = {{a.x, b.y},  {-a.x, c.y}, {-c.x, b.y},
                                  {-a.y, b.x}, {a.y, c.x},  {c.y, b.x}};
    std::array<double, 12> expansion{};
    std::size_t size = 0;
    const auto grow = [&](double value) {
        double q = value;
        std::size_t kept = 0;
        for (std::size_t i = 0; i < size; ++i) {
            double sum = 0.0;
            double error = 0.0;
            twoSum(q, expansion[i], sum, error);
            q = sum;
            if (error != 0.0) {
                expansion[kept++] = error;
            }
        }
        if (q != 0.0) {
            expansion[kept++] = q;
        }
        size = kept;
    };
    for (const auto& f : factors) {
        const double product = f[0] * f[1];
        grow(std::fma(f[0], f[1], -product));
        grow(product);
    }
    if (size == 0) {
        return 0;
    }
    return expansion[size - 1] > 0.0 ? 1 : -1;
}

int orientation(const Point& a, const Point& b, const Point& c)
{
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double det = left - right;
    double sum = 0.0;
    if (left > 0.0) {
        if (right <= 0.0) {
            return det > 0.0 ? 1 : (det < 0.0 ? -1 : 0);
        }
        sum = left + right;
    } else if (left < 0.0) {
        if (right >= 0.0) {
            return det > 0.0 ? 1 : (det < 0.0 ? -1 : 0);
        }
        sum = -left - right;
    } else {
        return det > 0.0 ? 1 : (det < 0.0 ? -1 : 0);
    }
    // Error bound of the floating-point determinant (Shewchuk's ccwerrboundA).
    constexpr double epsilon = 1.1102230246251565e-16;
    constexpr double bound = (3.0 + 16.0 * epsilon) * epsilon;
    if (det >= bound * sum || -det >= bound * sum) {
        return det > 0.0 ? 1 : -1;
    }
    return exactOrientation(a, b, c);
}

double distance2(const Point& p, const Point& q)
{
    const double dx = p.x - q.x;
    const double dy = p.y - q.y;
    return dx * dx + dy * dy;
}

// Endpoints are taken in a fixed order so that an edge shared by two shapes, whatever its
// direction in each, gives bit-identical distances and the tie goes to the lower position.
double segmentDistance2(const Point& p, Point a, Point b)
{
    if (b.x < a.x || (b.x == a.x && b.y < a.y)) {
        std::swap(a, b);
    }
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double length2 = dx * dx + dy * dy;
    if (length2 == 0.0) {
        return distance2(p, a);
    }
    const double r = ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2;
    if (r <= 0.0) {
        return distance2(p, a);
    }
    if (r >= 1.0) {
        return distance2(p, b);
    }
    const double cross = (a.y - p.y) * dx - (a.x - p.x) * dy;
    return cross * cross / length2;
}

enum class Location { Exterior, Interior, Boundary };

enum class Kind : std::uint8_t {
    Empty,
    Polygonal,
    // Paths, or single points: distances by segments, containment through GEOS.
    Linear,
    // Mixed collections: everything through GEOS.
    Other,
};

struct QueueEntry {
    double bound2;
    std::uint32_t level;
    std::uint32_t slot;
    bool operator>(const QueueEntry& o) const { return bound2 > o.bound2; }
};

// Position along a Hilbert curve of a point on a 2^16 grid: consecutive positions stay close,
// so runs of items make compact nodes at every level.
std::uint32_t hilbertIndex(std::uint32_t x, std::uint32_t y)
{
    constexpr std::uint32_t side = 1u << 16;
    std::uint64_t d = 0;
    for (std::uint32_t s = side / 2; s > 0; s /= 2) {
        const std::uint32_t rx = (x & s) ? 1 : 0;
        const std::uint32_t ry = (y & s) ? 1 : 0;
        d += std::uint64_t{s} * s * ((3 * rx) ^ ry);
        if (ry == 0) {
            if (rx == 1) {
                x = side - 1 - x;
                y = side - 1 - y;
            }
            std::swap(x, y);
        }
    }
    return static_cast<std::uint32_t>(d);
}

void prefetchRange(const void* begin, const void* end)
{
    constexpr std::ptrdiff_t line = 64;
    for (const auto* at = static_cast<const char*>(begin); at < static_cast<const char*>(end);
         at += line) {
        __builtin_prefetch(at);
    }
}

} // namespace

struct FeatureIndex::Impl {
    std::vector<Geometry> shapes;
    std::vector<Kind> kinds;
    std::vector<Box> envelopes;
    // Shape s owns chunks [shapeChunks[s], shapeChunks[s + 1]).
    std::vector<std::uint32_t> shapeChunks;
    std::vector<Chunk> chunks;
    std::vector<Point> coords;

    // Packed R-tree over the non-empty shapes, in Hilbert order of their envelope centres.
    // Level 0 holds one slot per shape, each higher level one slot per block of Fanout slots
    // below it: slot i of level L covers block i of level L - 1. The top level is one block.
    // A block stores its Fanout xmin, then ymin, xmax and ymax values together, so it is
    // tested with straight-line code over four adjacent cache lines.
    struct Level {
        std::uint32_t start;
        std::uint32_t count;
    };
    std::vector<Level> levels;
    std::vector<float> blocks;
    std::vector<std::uint32_t> slotShape;

    mutable std::vector<geos::PreparedPtr> prepared;

    void extract(std::vector<std::uint32_t>& items);
    void addSequence(const std::vector<Point>& points);
    void buildTree(const std::vector<std::uint32_t>& items);
    void appendSlot(const Box& box, std::uint32_t shape);

    bool hasItems() const { return !levels.empty(); }
    std::uint32_t top() const { return static_cast<std::uint32_t>(levels.size() - 1); }
    std::uint32_t blockBase(std::uint32_t level, std::uint32_t block) const
    {
        return levels[level].start + block * Fanout;
    }
    const float* block(std::uint32_t slot) const { return blocks.data() + slot / Fanout * Fanout * 4; }
    Box slotBox(std::uint32_t slot) const
    {
        const float* b = block(slot);
        const std::uint32_t k = slot % Fanout;
        return {b[k], b[Fanout + k], b[2 * Fanout + k], b[3 * Fanout + k]};
    }

    // Calls onShape(shape) for every item whose slot passes: blockMask(base) has bit k set
    // when slot base + k passes (the test is also applied to the nodes above), in tree order.
    template <class BlockMask, class OnShape> void visit(BlockMask blockMask, OnShape onShape) const;
    template <class Test> std::uint32_t maskOf(std::uint32_t base, Test test) const
    {
        std::uint32_t mask = 0;
        for (std::uint32_t k = 0; k < Fanout; ++k) {
            mask |= static_cast<std::uint32_t>(test(slotBox(base + k))) << k;
        }
        return mask;
    }
    // Nearest search: lowerBounds2(base, bounds) bounds from below the squared distance of
    // anything under each slot of a block; distance2(shape, bound2, limit2) is a shape's exact
    // squared distance when it is within limit2 (and anything above limit2 otherwise), given
    // the bound of its slot.
    template <class LowerBounds, class Distance>
    std::optional<Nearest> nearestBy(LowerBounds lowerBounds2, Distance distance2) const;

    Location locate(std::size_t shape, const Point& p) const;
    double minSegmentDistance2(std::size_t shape, const Point& p, double limit2) const;
    bool containsPoint(std::size_t shape, const Point& p) const;
    double pointDistance2(std::size_t shape, const Point& p, double bound2, double limit2) const;
    void prefetchChunks(std::uint32_t shape) const
    {
        prefetchRange(chunks.data() + shapeChunks[shape], chunks.data() + shapeChunks[shape + 1]);
    }
    const GEOSPreparedGeometry* preparedShape(std::size_t shape) const;
};

void FeatureIndex::Impl::extract(std::vector<std::uint32_t>& items)
{
    const std::size_t n = shapes.size();
    kinds.assign(n, Kind::Empty);
    envelopes.assign(n, Box{});
    shapeChunks.assign(n + 1, 0);
    for (std::size_t s = 0; s < n; ++s) {
        shapeChunks[s] = static_cast<std::uint32_t>(chunks.size());
        const Geometry& shape = shapes[s];
        if (shape.isEmpty()) {
            continue;
        }
        const int type = GEOSGeomTypeId_r(geos::context(), shape.geos());
        switch (type) {
        case GEOS_POLYGON:
        case GEOS_MULTIPOLYGON:
        case GEOS_LINESTRING:
        case GEOS_LINEARRING:
        case GEOS_MULTILINESTRING:
            kinds[s] = type == GEOS_POLYGON || type == GEOS_MULTIPOLYGON ? Kind::Polygonal
                                                                          : Kind::Linear;
            for (const auto& part : shape.parts()) {
                addSequence(part);
            }
            break;
        case GEOS_POINT:
        case GEOS_MULTIPOINT:
            kinds[s] = Kind::Linear;
            for (const auto& part : shape.parts()) {
                for (const Point& p : part) {
                    addSequence({p});
                }
            }
            break;
        default:
            kinds[s] = Kind::Other;
            break;
        }
        envelopes[s] = Box::of(shape.envelope());
        items.push_back(static_cast<std::uint32_t>(s));
    }
    shapeChunks[n] = static_cast<std::uint32_t>(chunks.size());
}

void FeatureIndex::Impl::addSequence(const std::vector<Point>& points)
{
    if (points.empty()) {
        return;
    }
    const auto start = static_cast<std::uint32_t>(coords.size());
    coords.insert(coords.end(), points.begin(), points.end());
    const auto last = static_cast<std::uint32_t>(coords.size() - 1);
    for (std::uint32_t first = start;;) {
        const std::uint32_t end = std::min(first + ChunkEdges, last);
        Box box{coords[first].x, coords[first].y, coords[first].x, coords[first].y};
        for (std::uint32_t i = first + 1; i <= end; ++i) {
            box = box.united({coords[i].x, coords[i].y, coords[i].x, coords[i].y});
        }
        chunks.push_back({roundDown(box.xmin), roundDown(box.ymin), roundUp(box.xmax),
                          roundUp(box.ymax), first, end});
        if (end == last) {
            break;
        }
        first = end;
    }
}

void FeatureIndex::Impl::appendSlot(const Box& box, std::uint32_t shape)
{
    const auto slot = static_cast<std::uint32_t>(slotShape.size());
    if (slot % Fanout == 0) {
        blocks.resize(blocks.size() + 4 * Fanout);
    }
    float* b = blocks.data() + slot / Fanout * Fanout * 4;
    const std::uint32_t k = slot % Fanout;
    b[k] = roundDown(box.xmin);
    b[Fanout + k] = roundDown(box.ymin);
    b[2 * Fanout + k] = roundUp(box.xmax);
    b[3 * Fanout + k] = roundUp(box.ymax);
    slotShape.push_back(shape);
}

void FeatureIndex::Impl::buildTree(const std::vector<std::uint32_t>& items)
{
    const std::size_t n = items.size();
    if (n == 0) {
        return;
    }
    Box extent = envelopes[items.front()];
    for (std::uint32_t item : items) {
        extent = extent.united(envelopes[item]);
    }
    const auto grid = [](double offset, double size) {
        return size > 0 ? static_cast<std::uint32_t>(std::clamp(offset / size, 0.0, 1.0) * 65535)
                        : 0u;
    };
    std::vector<std::pair<std::uint32_t, std::uint32_t>> order;
    order.reserve(n);
    for (std::uint32_t item : items) {
        const Box& b = envelopes[item];
        order.emplace_back(hilbertIndex(grid((b.xmin + b.xmax) / 2 - extent.xmin,
                                             extent.xmax - extent.xmin),
                                        grid((b.ymin + b.ymax) / 2 - extent.ymin,
                                             extent.ymax - extent.ymin)),
                           item);
    }
    std::sort(order.begin(), order.end());

    const Box unused{Infinity, Infinity, -Infinity, -Infinity};
    const auto pad = [&] {
        while (slotShape.size() % Fanout != 0) {
            appendSlot(unused, NoShape);
        }
    };
    levels.push_back({0, static_cast<std::uint32_t>(n)});
    for (const auto& [key, item] : order) {
        appendSlot(envelopes[item], item);
    }
    pad();
    while (levels.back().count > Fanout) {
        const Level below = levels.back();
        const std::uint32_t count = (below.count + Fanout - 1) / Fanout;
        levels.push_back({static_cast<std::uint32_t>(slotShape.size()), count});
        for (std::uint32_t b = 0; b < count; ++b) {
            const std::uint32_t base = below.start + b * Fanout;
            const std::uint32_t used = std::min(Fanout, below.count - b * Fanout);
            Box united = slotBox(base);
            for (std::uint32_t k = 1; k < used; ++k) {
                united = united.united(slotBox(base + k));
            }
            appendSlot(united, NoShape);
        }
        pad();
    }
}

template <class BlockMask, class OnShape>
void FeatureIndex::Impl::visit(BlockMask blockMask, OnShape onShape) const
{
    struct Pending {
        std::uint32_t level;
        std::uint32_t block;
    };
    // Each visited block leaves at most Fanout - 1 more behind per level.
    std::array<Pending, Fanout * 10> stack;
    std::size_t size = 0;
    stack[size++] = {top(), 0};
    while (size > 0) {
        const Pending at = stack[--size];
        const std::uint32_t base = blockBase(at.level, at.block);
        std::uint32_t mask = blockMask(base);
        while (mask != 0) {
            const auto k = static_cast<std::uint32_t>(std::countr_zero(mask));
            mask &= mask - 1;
            if (at.level == 0) {
                onShape(slotShape[base + k]);
            } else {
                stack[size++] = {at.level - 1, at.block * Fanout + k};
            }
        }
    }
}

template <class LowerBounds, class Distance>
std::optional<FeatureIndex::Nearest> FeatureIndex::Impl::nearestBy(LowerBounds lowerBounds2,
                                                                   Distance distance2) const
{
    double best2 = Infinity;
    std::uint32_t best = NoShape;
    std::array<double, Fanout> bounds;
    const auto consider = [&](std::uint32_t shape, double bound2) {
        const double d2 = distance2(shape, bound2, best2);
        if (d2 < best2 || (d2 == best2 && shape < best)) {
            best2 = d2;
            best = shape;
        }
    };

    // A first shape, reached by always taking the nearest box, bounds the search so that the
    // best-first pass below queues only the few boxes that can still hold something closer.
    std::uint32_t seed = NoShape;
    for (std::uint32_t level = top(), block = 0;;) {
        lowerBounds2(blockBase(level, block), bounds);
        const auto k = static_cast<std::uint32_t>(std::min_element(bounds.begin(), bounds.end()) -
                                                  bounds.begin());
        if (bounds[k] == Infinity) {
            break;
        }
        if (level == 0) {
            seed = slotShape[blockBase(0, block) + k];
            consider(seed, bounds[k]);
            break;
        }
        --level;
        block = block * Fanout + k;
    }

    thread_local std::vector<QueueEntry> queue;
    queue.clear();
    const auto later = std::greater<QueueEntry>();
    const auto expand = [&](std::uint32_t level, std::uint32_t block) {
        const std::uint32_t base = blockBase(level, block);
        lowerBounds2(base, bounds);
        const double limit = pruneBound(best2);
        for (std::uint32_t k = 0; k < Fanout; ++k) {
            if (bounds[k] <= limit && bounds[k] < Infinity) {
                if (level == 0) {
                    prefetchChunks(slotShape[base + k]);
                }
                queue.push_back({bounds[k], level, block * Fanout + k});
                std::push_heap(queue.begin(), queue.end(), later);
            }
        }
    };
    expand(top(), 0);
    while (!queue.empty()) {
        std::pop_heap(queue.begin(), queue.end(), later);
        const QueueEntry next = queue.back();
        queue.pop_back();
        if (next.bound2 > pruneBound(best2)) {
            break;
        }
        if (next.level > 0) {
            expand(next.level - 1, next.slot);
        } else if (const std::uint32_t shape = slotShape[levels[0].start + next.slot];
                   shape != seed) {
            consider(shape, next.bound2);
        }
    }
    if (best == NoShape) {
        return std::nullopt;
    }
    return Nearest{best, std::sqrt(best2)};
}

Location FeatureIndex::Impl::locate(std::size_t shape, const Point& p) const
{
    // Only chunks meeting the ray from p to the right matter; their vertices are fetched
    // together, then read.
    std::array<std::uint32_t, BatchChunks> batch;
    std::size_t count = 0;
    bool inside = false;
    const auto crossings = [&](const Chunk& chunk) -> bool {
        for (std::uint32_t i = chunk.first + 1; i <= chunk.last; ++i) {
            const Point& a = coords[i - 1];
            const Point& b = coords[i];
            // Edges wholly above, below or left of p neither cross the ray nor hold p.
            if ((a.y > p.y && b.y > p.y) || (a.y < p.y && b.y < p.y) ||
                (a.x < p.x && b.x < p.x)) {
                continue;
            }
            // Rings are closed, so every vertex ends some edge.
            if (b.x == p.x && b.y == p.y) {
                return true;
            }
            if (a.y == p.y && b.y == p.y) {
                if (std::min(a.x, b.x) <= p.x) {
                    return true;
                }
                continue;
            }
            if ((a.y > p.y) != (b.y > p.y)) {
                if (a.x > p.x && b.x > p.x) {
                    inside = !inside;
                    continue;
                }
                int side = orientation(a, b, p);
                if (side == 0) {
                    return true;
                }
                if (b.y < a.y) {
                    side = -side;
                }
                if (side > 0) {
                    inside = !inside;
                }
            }
        }
        return false;
    };
    const auto flush = [&] {
        for (std::size_t i = 0; i < count; ++i) {
            if (crossings(chunks[batch[i]])) {
                return true;
            }
        }
        count = 0;
        return false;
    };
    for (std::uint32_t k = shapeChunks[shape]; k < shapeChunks[shape + 1]; ++k) {
        const Chunk& chunk = chunks[k];
        if (chunk.ymin > p.y || chunk.ymax < p.y || chunk.xmax < p.x) {
            continue;
        }
        prefetchRange(&coords[chunk.first], &coords[chunk.last] + 1);
        batch[count++] = k;
        if (count == batch.size() && flush()) {
            return Location::Boundary;
        }
    }
    if (flush()) {
        return Location::Boundary;
    }
    return inside ? Location::Interior : Location::Exterior;
}

double FeatureIndex::Impl::minSegmentDistance2(std::size_t shape, const Point& p,
                                               double limit2) const
{
    // Chunks near enough to matter, nearest first, their vertices fetched together.
    std::array<std::pair<double, std::uint32_t>, BatchChunks> batch;
    std::size_t count = 0;
    double best = Infinity;
    const auto scan = [&](const Chunk& chunk) {
        if (chunk.first == chunk.last) {
            best = std::min(best, distance2(p, coords[chunk.first]));
        }
        for (std::uint32_t i = chunk.first + 1; i <= chunk.last; ++i) {
            best = std::min(best, segmentDistance2(p, coords[i - 1], coords[i]));
        }
    };
    const auto flush = [&] {
        std::sort(batch.begin(), batch.begin() + static_cast<std::ptrdiff_t>(count));
        for (std::size_t i = 0; i < count; ++i) {
            if (batch[i].first > pruneBound(std::min(best, limit2))) {
                break;
            }
            scan(chunks[batch[i].second]);
        }
        count = 0;
    };
    for (std::uint32_t k = shapeChunks[shape]; k < shapeChunks[shape + 1]; ++k) {
        const Chunk& chunk = chunks[k];
        const double bound = chunk.box().distance2(p);
        if (bound > pruneBound(std::min(best, limit2))) {
            continue;
        }
        prefetchRange(&coords[chunk.first], &coords[chunk.last] + 1);
        batch[count++] = {bound, k};
        if (count == batch.size()) {
            flush();
        }
    }
    flush();
    return best;
}

const GEOSPreparedGeometry* FeatureIndex::Impl::preparedShape(std::size_t shape) const
{
    if (!prepared[shape]) {
        prepared[shape].reset(geos::check(GEOSPrepare_r(geos::context(), shapes[shape].geos()),
                                          "cannot prepare a shape"));
    }
    return prepared[shape].get();
}

bool FeatureIndex::Impl::containsPoint(std::size_t shape, const Point& p) const
{
    if (kinds[shape] == Kind::Polygonal) {
        return locate(shape, p) == Location::Interior;
    }
    // Paths and points hold a point only on their interior; rare enough to leave to GEOS.
    const Geometry point = Geometry::point(p);
    return geos::checkPredicate(GEOSContains_r(geos::context(), shapes[shape].geos(), point.geos()),
                                "cannot test containment");
}

double FeatureIndex::Impl::pointDistance2(std::size_t shape, const Point& p, double bound2,
                                          double limit2) const
{
    switch (kinds[shape]) {
    case Kind::Polygonal:
        if (bound2 == 0.0 && locate(shape, p) != Location::Exterior) {
            return 0.0;
        }
        return minSegmentDistance2(shape, p, limit2);
    case Kind::Linear:
        return minSegmentDistance2(shape, p, limit2);
    default: {
        const double d = shapes[shape].distance(Geometry::point(p));
        return d * d;
    }
    }
}

FeatureIndex::FeatureIndex(std::vector<Geometry> shapes) : m_impl(std::make_unique<Impl>())
{
    m_impl->shapes = std::move(shapes);
    m_impl->prepared.resize(m_impl->shapes.size());
    std::vector<std::uint32_t> items;
    m_impl->extract(items);
    m_impl->buildTree(items);
}

FeatureIndex::~FeatureIndex() = default;
FeatureIndex::FeatureIndex(FeatureIndex&&) noexcept = default;
FeatureIndex& FeatureIndex::operator=(FeatureIndex&&) noexcept = default;

std::size_t FeatureIndex::size() const
{
    return m_impl ? m_impl->shapes.size() : 0;
}

std::optional<std::size_t> FeatureIndex::containing(const Point& p) const
{
    const Impl& d = *m_impl;
    if (!d.hasItems()) {
        return std::nullopt;
    }
    // Rounded outwards, p meets every box the exact point meets (and a few more, which the
    // exact test then rejects).
    const float xLow = roundDown(p.x);
    const float xHigh = roundUp(p.x);
    const float yLow = roundDown(p.y);
    const float yHigh = roundUp(p.y);
#if defined(__SSE2__)
    const __m128 xl = _mm_set1_ps(xLow);
    const __m128 xh = _mm_set1_ps(xHigh);
    const __m128 yl = _mm_set1_ps(yLow);
    const __m128 yh = _mm_set1_ps(yHigh);
    const auto blockMask = [&](std::uint32_t base) {
        const float* b = d.block(base);
        std::uint32_t mask = 0;
        for (std::uint32_t g = 0; g < Fanout; g += 4) {
            const __m128 inX = _mm_and_ps(_mm_cmple_ps(_mm_loadu_ps(b + g), xh),
                                          _mm_cmple_ps(xl, _mm_loadu_ps(b + 2 * Fanout + g)));
            const __m128 inY = _mm_and_ps(_mm_cmple_ps(_mm_loadu_ps(b + Fanout + g), yh),
                                          _mm_cmple_ps(yl, _mm_loadu_ps(b + 3 * Fanout + g)));
            mask |= static_cast<std::uint32_t>(_mm_movemask_ps(_mm_and_ps(inX, inY))) << g;
        }
        return mask;
    };
#else
    const auto blockMask = [&](std::uint32_t base) {
        const float* b = d.block(base);
        std::uint32_t mask = 0;
        for (std::uint32_t k = 0; k < Fanout; ++k) {
            const bool in = (b[k] <= xHigh) & (xLow <= b[2 * Fanout + k]) &
                            (b[Fanout + k] <= yHigh) & (yLow <= b[3 * Fanout + k]);
            mask |= static_cast<std::uint32_t>(in) << k;
        }
        return mask;
    };
#endif
    // Candidates are gathered first and tested from the lowest position up; past the buffer
    // they are tested as they come.
    std::array<std::uint32_t, 32> found;
    std::size_t count = 0;
    std::uint32_t best = NoShape;
    d.visit(
        blockMask,
        [&](std::uint32_t shape) {
            if (count < found.size()) {
                prefetchRange(&d.chunks[d.shapeChunks[shape]],
                              d.chunks.data() + d.shapeChunks[shape + 1]);
                found[count++] = shape;
            } else if (shape < best && d.containsPoint(shape, p)) {
                best = shape;
            }
        });
    std::sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(count));
    for (std::size_t i = 0; i < count && found[i] < best; ++i) {
        if (d.containsPoint(found[i], p)) {
            best = found[i];
        }
    }
    if (best == NoShape) {
        return std::nullopt;
    }
    return best;
}

std::optional<FeatureIndex::Nearest> FeatureIndex::nearest(const Point& p) const
{
    const Impl& d = *m_impl;
    if (!d.hasItems() || !std::isfinite(p.x) || !std::isfinite(p.y)) {
        return std::nullopt;
    }
    const double px = p.x;
    const double py = p.y;
    return d.nearestBy(
        [&](std::uint32_t base, std::array<double, Fanout>& bounds) {
            const float* b = d.block(base);
            for (std::uint32_t k = 0; k < Fanout; ++k) {
                const double dx = std::max(std::max(b[k] - px, px - b[2 * Fanout + k]), 0.0);
                const double dy =
                    std::max(std::max(b[Fanout + k] - py, py - b[3 * Fanout + k]), 0.0);
                bounds[k] = dx * dx + dy * dy;
            }
        },
        [&](std::uint32_t shape, double bound2, double limit2) {
            return d.pointDistance2(shape, p, bound2, limit2);
        });
}

std::optional<std::size_t> FeatureIndex::containing(const Geometry& shape) const
{
    if (shape.isEmpty() || !m_impl->hasItems()) {
        return std::nullopt;
    }
    if (shape.type() == ShapeType::Point) {
        return containing(shape.firstPoint());
    }
    const Impl& d = *m_impl;
    const Box target = Box::of(shape.envelope());
    std::vector<std::uint32_t> found;
    d.visit([&](std::uint32_t base) {
        return d.maskOf(base, [&](const Box& b) { return b.contains(target); });
    },
            [&](std::uint32_t source) {
                if (d.envelopes[source].contains(target)) {
                    found.push_back(source);
                }
            });
    std::sort(found.begin(), found.end());
    for (std::uint32_t source : found) {
        if (geos::checkPredicate(
                GEOSPreparedContains_r(geos::context(), d.preparedShape(source), shape.geos()),
                "cannot test containment")) {
            return source;
        }
    }
    return std::nullopt;
}

std::optional<FeatureIndex::Nearest> FeatureIndex::nearest(const Geometry& shape) const
{
    if (shape.isEmpty() || !m_impl->hasItems()) {
        return std::nullopt;
    }
    if (shape.type() == ShapeType::Point) {
        return nearest(shape.firstPoint());
    }
    const Impl& d = *m_impl;
    const Box target = Box::of(shape.envelope());
    GEOSContextHandle_t ctx = geos::context();
    return d.nearestBy(
        [&](std::uint32_t base, std::array<double, Fanout>& bounds) {
            for (std::uint32_t k = 0; k < Fanout; ++k) {
                bounds[k] = d.slotBox(base + k).distance2(target);
            }
        },
        [&](std::uint32_t source, double, double) {
            const GEOSPreparedGeometry* prepared = d.preparedShape(source);
            // Facet distance alone misses a shape lying inside another.
            double distance = 0.0;
            if (!geos::checkPredicate(GEOSPreparedIntersects_r(ctx, prepared, shape.geos()),
                                      "cannot test intersection") &&
                !GEOSPreparedDistance_r(ctx, prepared, shape.geos(), &distance)) {
                geos::fail("cannot compute a distance");
            }
            return distance * distance;
        });
}

std::vector<std::size_t> FeatureIndex::candidates(const Envelope& box) const
{
    std::vector<std::size_t> found;
    if (box.isEmpty() || !m_impl->hasItems()) {
        return found;
    }
    const Impl& d = *m_impl;
    const Box target = Box::of(box);
    d.visit([&](std::uint32_t base) {
        return d.maskOf(base, [&](const Box& b) { return b.intersects(target); });
    },
            [&](std::uint32_t shape) {
                if (d.envelopes[shape].intersects(target)) {
                    found.push_back(shape);
                }
            });
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace brevant::platform::geometry
