#include "gdal/SpatialIndexDeferral.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/tabular/SqliteDatabase.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace brevant::platform::geodatabase {

namespace {

using Entry = SpatialIndexDeferral::Entry;

// What the R-tree module stores for a double: the nearest float on the outer side, rounded
// as SQLite rounds it, so that a packed index holds the same boxes its triggers would have.
constexpr double kTowards = 1.0 - 1.0 / 8388608.0;
constexpr double kAway = 1.0 + 1.0 / 8388608.0;

float valueDown(double value)
{
    auto f = static_cast<float>(value);
    if (static_cast<double>(f) > value) {
        f = static_cast<float>(value * (value < 0 ? kAway : kTowards));
    }
    return f;
}

float valueUp(double value)
{
    auto f = static_cast<float>(value);
    if (static_cast<double>(f) < value) {
        f = static_cast<float>(value * (value < 0 ? kTowards : kAway));
    }
    return f;
}

// Cells are 8 bytes of identifier and four 4-byte coordinates, big-endian; a node starts with
// the tree's depth (read on the root only) and its cell count, 2 bytes each.
constexpr int kCellBytes = 24;
constexpr int kNodeHeader = 4;

void putBigEndian(unsigned char* out, uint64_t value, int bytes)
{
    for (int i = bytes - 1; i >= 0; --i) {
        out[i] = static_cast<unsigned char>(value & 0xFF);
        value >>= 8;
    }
}

void putCell(unsigned char* out, int64_t id, const float (&box)[4])
{
    putBigEndian(out, static_cast<uint64_t>(id), 8);
    for (int i = 0; i < 4; ++i) {
        uint32_t bits = 0;
        std::memcpy(&bits, &box[i], sizeof bits);
        putBigEndian(out + 8 + 4 * i, bits, 4);
    }
}

/// Position along a Hilbert curve over a 65536 by 65536 grid: neighbours on the curve are
/// neighbours on the map, so consecutive runs of entries make compact nodes.
uint64_t hilbert(uint32_t x, uint32_t y)
{
    constexpr uint32_t n = 1U << 16;
    uint64_t d = 0;
    for (uint32_t s = n / 2; s > 0; s /= 2) {
        const uint32_t rx = (x & s) > 0 ? 1 : 0;
        const uint32_t ry = (y & s) > 0 ? 1 : 0;
        d += static_cast<uint64_t>(s) * s * ((3 * rx) ^ ry);
        if (ry == 0) {
            if (rx == 1) {
                x = n - 1 - x;
                y = n - 1 - y;
            }
            std::swap(x, y);
        }
    }
    return d;
}

void sortAlongCurve(std::vector<Entry>& entries)
{
    if (entries.size() < 2) {
        return;
    }
    double xmin = entries[0].box[0];
    double xmax = xmin;
    double ymin = entries[0].box[2];
    double ymax = ymin;
    for (const Entry& e : entries) {
        xmin = std::min(xmin, 0.5 * (e.box[0] + e.box[1]));
        xmax = std::max(xmax, 0.5 * (e.box[0] + e.box[1]));
        ymin = std::min(ymin, 0.5 * (e.box[2] + e.box[3]));
        ymax = std::max(ymax, 0.5 * (e.box[2] + e.box[3]));
    }
    const double sx = xmax > xmin ? 65535.0 / (xmax - xmin) : 0.0;
    const double sy = ymax > ymin ? 65535.0 / (ymax - ymin) : 0.0;
    // A cell of the grid; a box reaching to infinity (or not a number) goes to an edge.
    auto cell = [](double offset, double scale) {
        const double at = offset * scale;
        return at > 0.0 ? static_cast<uint32_t>(std::min(at, 65535.0)) : 0U;
    };
    std::vector<std::pair<uint64_t, std::size_t>> keys(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const Entry& e = entries[i];
        keys[i] = {hilbert(cell(0.5 * (e.box[0] + e.box[1]) - xmin, sx),
                           cell(0.5 * (e.box[2] + e.box[3]) - ymin, sy)),
                   i};
    }
    std::sort(keys.begin(), keys.end());
    std::vector<Entry> sorted;
    sorted.reserve(entries.size());
    for (const auto& key : keys) {
        sorted.push_back(entries[key.second]);
    }
    entries = std::move(sorted);
}

/// Splits `count` items into the fewest runs of at most `capacity`, as even as can be: no
/// node is left with a handful of cells at the end of a level.
std::vector<std::size_t> runLengths(std::size_t count, std::size_t capacity)
{
    const std::size_t runs = (count + capacity - 1) / capacity;
    std::vector<std::size_t> lengths(runs, count / runs);
    for (std::size_t i = 0; i < count % runs; ++i) {
        ++lengths[i];
    }
    return lengths;
}

struct PackedTree {
    std::vector<std::vector<unsigned char>> nodes;     // node number i + 1
    std::vector<std::pair<int64_t, int64_t>> leafOf;   // entry id, leaf number
    std::vector<std::pair<int64_t, int64_t>> parentOf; // node number, parent number
};

/// Packs entries bottom-up into full nodes; the root is node 1.
PackedTree pack(std::vector<Entry> entries, int nodeSize)
{
    const auto capacity = static_cast<std::size_t>((nodeSize - kNodeHeader) / kCellBytes);
    sortAlongCurve(entries);
    // Levels from the leaves up, each a list of nodes, each a list of cells; a cell of an
    // upper level names a node of the level below by its position until numbers are given.
    std::vector<std::vector<std::vector<Entry>>> levels;
    std::vector<Entry> cells = std::move(entries);
    while (cells.size() > capacity) {
        std::vector<std::vector<Entry>> level;
        std::vector<Entry> above;
        std::size_t at = 0;
        for (const std::size_t length : runLengths(cells.size(), capacity)) {
            std::vector<Entry> node(cells.begin() + static_cast<std::ptrdiff_t>(at),
                                    cells.begin() + static_cast<std::ptrdiff_t>(at + length));
            Entry box{static_cast<int64_t>(level.size()),
                      {node[0].box[0], node[0].box[1], node[0].box[2], node[0].box[3]}};
            for (const Entry& cell : node) {
                box.box[0] = std::min(box.box[0], cell.box[0]);
                box.box[1] = std::max(box.box[1], cell.box[1]);
                box.box[2] = std::min(box.box[2], cell.box[2]);
                box.box[3] = std::max(box.box[3], cell.box[3]);
            }
            above.push_back(box);
            level.push_back(std::move(node));
            at += length;
        }
        levels.push_back(std::move(level));
        cells = std::move(above);
    }
    // Numbers from the root down: the root is 1, then each level in order.
    std::vector<std::vector<int64_t>> numbers(levels.size());
    int64_t next = 2;
    for (std::size_t l = levels.size(); l-- > 0;) {
        for (std::size_t i = 0; i < levels[l].size(); ++i) {
            numbers[l].push_back(next++);
        }
    }
    PackedTree tree;
    tree.nodes.resize(static_cast<std::size_t>(next - 1));
    auto write = [&](int64_t number, const std::vector<Entry>& node, std::size_t level) {
        std::vector<unsigned char>& blob = tree.nodes[static_cast<std::size_t>(number - 1)];
        blob.assign(static_cast<std::size_t>(nodeSize), 0);
        if (number == 1) {
            putBigEndian(blob.data(), levels.size(), 2);
        }
        putBigEndian(blob.data() + 2, node.size(), 2);
        for (std::size_t c = 0; c < node.size(); ++c) {
            // On the leaves a cell holds a row's identifier, above a child's number.
            const int64_t id =
                level == 0 ? node[c].id : numbers[level - 1][static_cast<std::size_t>(node[c].id)];
            putCell(blob.data() + kNodeHeader + kCellBytes * c, id, node[c].box);
            if (level == 0) {
                tree.leafOf.emplace_back(id, number);
            } else {
                tree.parentOf.emplace_back(id, number);
            }
        }
    };
    write(1, cells, levels.size());
    for (std::size_t l = levels.size(); l-- > 0;) {
        for (std::size_t i = 0; i < levels[l].size(); ++i) {
            write(numbers[l][i], levels[l][i], l);
        }
    }
    return tree;
}

[[noreturn]] void fail(const std::string& message)
{
    throw automation::PlatformError(automation::ErrorNumber::GdalBase + CPLE_AppDefined, "GDAL",
                                    message);
}

} // namespace

std::unique_ptr<SpatialIndexDeferral> SpatialIndexDeferral::start(WorkspaceData& workspace,
                                                                  const TableData& table)
{
    if (workspace.kind != Workspace::Kind::GeoPackage || workspace.readOnly || !table.hasShape) {
        return nullptr;
    }
    auto db = workspace.sqlite(table.name);
    if (!db) {
        return nullptr;
    }
    const std::string index = "rtree_" + table.name + "_" + table.shapeFieldName;
    if (!workspace.commit()) {
        fail("cannot commit changes to " + workspace.describe(table.name));
    }
    std::vector<std::string> triggers;
    {
        tabular::SqliteDatabase::Statement query(
            *db, "SELECT sql FROM sqlite_master WHERE type = 'trigger' AND name IN "
                 "(?1 || '_insert', ?1 || '_update1', ?1 || '_update2', ?1 || '_update3', "
                 "?1 || '_update4', ?1 || '_delete') AND sql IS NOT NULL");
        query.bind(1, index);
        while (query.step()) {
            triggers.push_back(query.text(0));
        }
        tabular::SqliteDatabase::Statement nodes(
            *db,
            "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = ?1 || '_node'");
        nodes.bind(1, index);
        if (triggers.size() != 6 || !nodes.step() || nodes.int64(0) != 1) {
            return nullptr;
        }
    }
    workspace.beginWrite();
    ++workspace.holdBatches;
    std::unique_ptr<SpatialIndexDeferral> deferral(
        new SpatialIndexDeferral(workspace, table.name, index, std::move(triggers)));
    for (const char* suffix :
         {"_insert", "_update1", "_update2", "_update3", "_update4", "_delete"}) {
        db->execute("DROP TRIGGER " + gdal::sqlName(index + suffix));
    }
    return deferral;
}

SpatialIndexDeferral::SpatialIndexDeferral(WorkspaceData& workspace, std::string table,
                                           std::string index, std::vector<std::string> triggers)
    : m_workspace(workspace), m_table(std::move(table)), m_index(std::move(index)),
      m_triggers(std::move(triggers))
{
}

SpatialIndexDeferral::~SpatialIndexDeferral()
{
    --m_workspace.holdBatches;
}

void SpatialIndexDeferral::add(int64_t id, double xmin, double xmax, double ymin, double ymax)
{
    m_added.push_back(Entry{id, {valueDown(xmin), valueUp(xmax), valueDown(ymin), valueUp(ymax)}});
}

void SpatialIndexDeferral::finish()
{
    auto db = m_workspace.sqlite(m_table);
    const std::string index = gdal::sqlName(m_index);
    const std::string nodeTable = gdal::sqlName(m_index + "_node");
    const std::string rowidTable = gdal::sqlName(m_index + "_rowid");
    const std::string parentTable = gdal::sqlName(m_index + "_parent");

    // The rows stored before hold their entries still: nothing kept the index up since.
    std::vector<Entry> entries;
    int nodeSize = 0;
    {
        tabular::SqliteDatabase::Statement size(*db, "SELECT length(data) FROM " + nodeTable +
                                                         " WHERE nodeno = 1");
        if (!size.step()) {
            fail("the spatial index of " + m_workspace.describe(m_table) + " has no root");
        }
        nodeSize = static_cast<int>(size.int64(0));
        if (nodeSize < kNodeHeader + 2 * kCellBytes) {
            fail("the spatial index of " + m_workspace.describe(m_table) + " has nodes of " +
                 std::to_string(nodeSize) + " bytes");
        }
        tabular::SqliteDatabase::Statement old(*db,
                                               "SELECT id, minx, maxx, miny, maxy FROM " + index);
        while (old.step()) {
            entries.push_back(
                Entry{old.int64(0),
                      {static_cast<float>(old.real(1)), static_cast<float>(old.real(2)),
                       static_cast<float>(old.real(3)), static_cast<float>(old.real(4))}});
        }
    }
    entries.insert(entries.end(), m_added.begin(), m_added.end());
    m_added = {};
    // One entry per row, the last one stored winning, as the insert trigger's INSERT OR REPLACE.
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.id < b.id; });
    std::vector<Entry> unique;
    unique.reserve(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + 1 < entries.size() && entries[i + 1].id == entries[i].id) {
            continue;
        }
        unique.push_back(entries[i]);
    }
    entries = {};
    PackedTree tree = pack(std::move(unique), nodeSize);
    std::sort(tree.leafOf.begin(), tree.leafOf.end());
    std::sort(tree.parentOf.begin(), tree.parentOf.end());

    db->execute("DELETE FROM " + nodeTable + "; DELETE FROM " + rowidTable + "; DELETE FROM " +
                parentTable);
    {
        tabular::SqliteDatabase::Statement insert(*db, "INSERT INTO " + nodeTable +
                                                           " (nodeno, data) VALUES (?1, ?2)");
        for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
            insert.reset();
            insert.bind(1, static_cast<int64_t>(i + 1));
            insert.bindBlob(2, tree.nodes[i].data(), tree.nodes[i].size());
            insert.step("cannot store the spatial index of");
        }
    }
    auto writePairs = [&](const std::string& sql,
                          const std::vector<std::pair<int64_t, int64_t>>& pairs) {
        tabular::SqliteDatabase::Statement insert(*db, sql);
        for (const auto& [key, value] : pairs) {
            insert.reset();
            insert.bind(1, key);
            insert.bind(2, value);
            insert.step("cannot store the spatial index of");
        }
    };
    writePairs("INSERT INTO " + rowidTable + " (rowid, nodeno) VALUES (?1, ?2)", tree.leafOf);
    writePairs("INSERT INTO " + parentTable + " (nodeno, parentnode) VALUES (?1, ?2)",
               tree.parentOf);
    for (const std::string& trigger : m_triggers) {
        db->execute(trigger);
    }
    m_finished = true;
}

} // namespace brevant::platform::geodatabase
