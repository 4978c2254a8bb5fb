#include "samplehost/RegionLayout.h"

#include "samplehost/Names.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace brevant::samplehost {

Profile profileOf(SampleSize size)
{
    switch (size) {
    case SampleSize::Small:
        break;
    case SampleSize::Medium:
        return {.latticeCells = 1'000'000,
                .counties = {36, 14, 24},
                .regionCounties = 6,
                .tracts = 3'600,
                .blocks = 36'000,
                .siteMapPolygons = {30'000, 27'000, 28'500, 25'500},
                .inundationCell = 0.008,
                .floodViewCell = 0.005,
                .usgsStep = 0.04,
                .pathSpacing = 0.01,
                .schools = 2'500,
                .hospitals = 200,
                .fireStations = 900,
                .policeStations = 400,
                .emergencyCenters = 40,
                .bridges = 3'000,
                .buildings = 25'000,
                .highwaySegments = 2'500,
                .railSegments = 1'000,
                .pipelineSegments = 1'200,
                .epicentres = 5'000,
                .faults = 120,
                .marPlot = 30};
    case SampleSize::Large:
        return {.latticeCells = 2'600'000,
                .counties = {58, 17, 36},
                .regionCounties = 8,
                .tracts = 12'000,
                .blocks = 160'000,
                .siteMapPolygons = {120'000, 110'000, 115'000, 105'000},
                .inundationCell = 0.004,
                .floodViewCell = 0.0025,
                .usgsStep = 0.02,
                .pathSpacing = 0.005,
                .schools = 12'000,
                .hospitals = 600,
                .fireStations = 4'000,
                .policeStations = 2'000,
                .emergencyCenters = 150,
                .bridges = 25'000,
                .buildings = 1'150'000,
                .highwaySegments = 20'000,
                .railSegments = 6'000,
                .pipelineSegments = 8'000,
                .epicentres = 30'000,
                .faults = 400,
                .marPlot = 60};
    }
    return {.latticeCells = 250'000,
            .counties = {20, 8, 12},
            .regionCounties = 4,
            .tracts = 360,
            .blocks = 3'600,
            .siteMapPolygons = {3'000, 2'700, 2'850, 2'550},
            .inundationCell = 0.02,
            .floodViewCell = 0.01,
            .usgsStep = 0.1,
            .pathSpacing = 0.02,
            .schools = 250,
            .hospitals = 24,
            .fireStations = 90,
            .policeStations = 45,
            .emergencyCenters = 8,
            .bridges = 300,
            .buildings = 2'500,
            .highwaySegments = 300,
            .railSegments = 120,
            .pipelineSegments = 150,
            .epicentres = 600,
            .faults = 40,
            .marPlot = 12};
}

namespace {

void layOutUnits(RegionLayout& region)
{
    const int n = region.lattice.cellCount();
    region.density.resize(at(n));
    region.states.label.assign(at(n), -1);
    for (int c = 0; c < n; ++c) {
        const Point p = region.lattice.centre(c);
        region.density[at(c)] = static_cast<float>(region.geography.density(p));
        region.states.label[at(c)] = region.geography.stateAt(p);
    }
    region.states.parent.assign(kStates.size(), -1);
    region.states.seed.assign(kStates.size(), 0);
    region.states.cells.assign(kStates.size(), 0);
    for (const int s : region.states.label) {
        if (s >= 0) {
            ++region.states.cells[at(s)];
        }
    }

    const auto weights = [&](double exponent) {
        std::vector<float> w(at(n));
        for (int c = 0; c < n; ++c) {
            w[at(c)] = static_cast<float>(std::pow(region.density[at(c)], exponent));
        }
        return w;
    };
    // Cost features from the children's size down, so that their borders wander at every
    // scale.
    const auto costNoise = [&](std::uint64_t key, int children) {
        double cells = 0;
        for (const int s : region.states.cells) {
            cells += s;
        }
        const double diameter = std::sqrt(cells / std::max(1, children));
        return Noise(region.seed ^ key, 1.2 / std::max(2.0, diameter), 5);
    };

    Random seeds = region.stream(3);
    std::vector<int> counties(region.profile.counties.begin(), region.profile.counties.end());
    int countyTotal = 0;
    for (const int c : counties) {
        countyTotal += c;
    }
    region.counties = subdivide(region.lattice, region.curve, region.states, counties,
                                weights(0.25), costNoise(0xc0, countyTotal), seeds);

    const auto tractWeight = weights(0.7);
    std::vector<double> countyWeight(at(region.counties.count()), 0.0);
    for (int c = 0; c < n; ++c) {
        if (region.counties.label[at(c)] >= 0) {
            countyWeight[at(region.counties.label[at(c)])] += tractWeight[at(c)];
        }
    }
    std::vector<int> tractCeiling(at(region.counties.count()));
    for (int k = 0; k < region.counties.count(); ++k) {
        tractCeiling[at(k)] = std::max(1, region.counties.cells[at(k)] / 6);
    }
    region.tracts = subdivide(region.lattice, region.curve, region.counties,
                              apportion(region.profile.tracts, countyWeight, tractCeiling),
                              tractWeight, costNoise(0x7c, region.profile.tracts), seeds);

    // Blocks smaller where people live, at most 270 to a tract (nine groups of 30).
    const auto blockWeight = weights(0.6);
    std::vector<double> blocksWanted(at(region.tracts.count()), 0.0);
    for (int c = 0; c < n; ++c) {
        if (region.tracts.label[at(c)] >= 0) {
            blocksWanted[at(region.tracts.label[at(c)])] += blockWeight[at(c)];
        }
    }
    std::vector<int> blockCeiling(at(region.tracts.count()));
    for (int k = 0; k < region.tracts.count(); ++k) {
        blockCeiling[at(k)] = std::clamp(region.tracts.cells[at(k)] / 4, 1, 270);
    }
    region.blocks = subdivide(region.lattice, region.curve, region.tracts,
                              apportion(region.profile.blocks, blocksWanted, blockCeiling),
                              blockWeight, costNoise(0xb1, region.profile.blocks), seeds);
}

/// The counties round the region's city, with every county on the lake's shore (so the
/// lake is a hole) and the island's county.
void chooseRegion(RegionLayout& region)
{
    const int n = region.lattice.cellCount();
    const int count = region.counties.count();
    std::vector<std::set<int>> adjacent(at(count));
    std::vector<Point> centroid(at(count), Point{0, 0});
    std::set<int> forced;
    for (int c = 0; c < n; ++c) {
        const int county = region.counties.label[at(c)];
        const Point p = region.lattice.centre(c);
        if (county >= 0) {
            centroid[at(county)].x += p.x / region.counties.cells[at(county)];
            centroid[at(county)].y += p.y / region.counties.cells[at(county)];
            if (region.geography.inIsland(p)) {
                forced.insert(county);
            }
        }
        for (const int m : region.lattice.neighbours(c)) {
            if (m < 0) {
                continue;
            }
            const int other = region.counties.label[at(m)];
            if (county >= 0 && other >= 0 && other != county) {
                adjacent[at(county)].insert(other);
            }
            if (other >= 0 && county < 0 && region.geography.inLake(p)) {
                forced.insert(other);
            }
        }
    }
    const Point centre = region.geography.regionCentre();
    int first = region.counties.label[at(region.lattice.cellAt(centre))];
    for (int k = 0; first < 0 && k < count; ++k) {
        if (region.counties.parent[at(k)] == kRegionState &&
            groundDistance(centroid[at(k)], centre) < 0.5) {
            first = k;
        }
    }
    std::set<int> chosen{first};
    while (static_cast<int>(chosen.size()) < region.profile.regionCounties) {
        int best = -1;
        for (const int k : chosen) {
            for (const int m : adjacent[at(k)]) {
                if (chosen.count(m) == 0 && region.counties.parent[at(m)] == kRegionState &&
                    (best < 0 || groundDistance(centroid[at(m)], centre) <
                                     groundDistance(centroid[at(best)], centre))) {
                    best = m;
                }
            }
        }
        if (best < 0) {
            break;
        }
        chosen.insert(best);
    }
    chosen.insert(forced.begin(), forced.end());
    region.regionCounty.assign(at(count), 0);
    for (const int k : chosen) {
        region.regionCounty[at(k)] = 1;
    }
    region.regionCell.assign(at(n), 0);
    for (int c = 0; c < n; ++c) {
        const int county = region.counties.label[at(c)];
        region.regionCell[at(c)] = county >= 0 && region.regionCounty[at(county)] ? 1 : 0;
        if (region.regionCell[at(c)]) {
            region.regionBox.expandToInclude(region.lattice.centre(c));
        }
    }
    region.regionBox =
        region.regionBox.expandedBy(std::max(region.lattice.sideX(), region.lattice.sideY()));
}

/// Tract populations follow density (about 4,200 people per tract on average); blocks
/// share their tract's people exactly, some blocks having none.
void countPeople(RegionLayout& region)
{
    Random people = region.stream(6);
    const int n = region.lattice.cellCount();
    std::vector<double> tractRaw(at(region.tracts.count()), 0.0);
    std::vector<double> blockRaw(at(region.blocks.count()), 0.0);
    std::array<double, 3> stateRaw{};
    std::array<int, 3> stateTracts{};
    for (int c = 0; c < n; ++c) {
        if (region.tracts.label[at(c)] >= 0) {
            tractRaw[at(region.tracts.label[at(c)])] += region.density[at(c)];
            blockRaw[at(region.blocks.label[at(c)])] += region.density[at(c)];
            stateRaw[at(region.states.label[at(c)])] += region.density[at(c)];
        }
    }
    for (int t = 0; t < region.tracts.count(); ++t) {
        ++stateTracts[at(region.stateOfTract(t))];
    }
    region.tractPopulation.resize(at(region.tracts.count()));
    for (int t = 0; t < region.tracts.count(); ++t) {
        const int s = region.stateOfTract(t);
        const double scale = 4200.0 * stateTracts[at(s)] / std::max(1e-9, stateRaw[at(s)]);
        region.tractPopulation[at(t)] =
            std::max<std::int64_t>(40, std::llround(tractRaw[at(t)] * scale));
    }
    // Blocks: shares by largest remainder so that they add up to the tract.
    region.blockPopulation.assign(at(region.blocks.count()), 0);
    std::vector<std::vector<int>> blocksOf(at(region.tracts.count()));
    for (int b = 0; b < region.blocks.count(); ++b) {
        blocksOf[at(region.blocks.parent[at(b)])].push_back(b);
    }
    for (int t = 0; t < region.tracts.count(); ++t) {
        const auto& blocks = blocksOf[at(t)];
        std::vector<double> weight;
        double sum = 0;
        for (const int b : blocks) {
            const bool empty = blocks.size() > 3 && people.chance(0.08);
            weight.push_back(empty ? 0.0 : blockRaw[at(b)] * people.uniform(0.3, 1.7));
            sum += weight.back();
        }
        if (sum <= 0) {
            weight.assign(blocks.size(), 1.0);
            sum = static_cast<double>(blocks.size());
        }
        const std::int64_t total = region.tractPopulation[at(t)];
        std::int64_t given = 0;
        std::vector<std::pair<double, std::size_t>> remainders;
        for (std::size_t k = 0; k < blocks.size(); ++k) {
            const double exact = static_cast<double>(total) * weight[k] / sum;
            region.blockPopulation[at(blocks[k])] = static_cast<std::int64_t>(exact);
            given += region.blockPopulation[at(blocks[k])];
            remainders.push_back({exact - std::floor(exact), k});
        }
        std::stable_sort(remainders.begin(), remainders.end(),
                         [](auto& a, auto& b) { return a.first > b.first; });
        for (std::size_t k = 0; given < total; k = (k + 1) % remainders.size()) {
            ++region.blockPopulation[at(blocks[remainders[k].second])];
            ++given;
        }
    }
}

void numberTracts(RegionLayout& region)
{
    Random numbers = region.stream(8);
    region.tractCode.resize(at(region.tracts.count()));
    region.tractName.resize(at(region.tracts.count()));
    int county = -1;
    int base = 0;
    int splitPending = 0;
    for (int t = 0; t < region.tracts.count(); ++t) {
        const bool lastOfCounty = t + 1 == region.tracts.count() ||
                                  region.tracts.parent[at(t + 1)] != region.tracts.parent[at(t)];
        if (region.tracts.parent[at(t)] != county) {
            county = region.tracts.parent[at(t)];
            base = 100 + numbers.integer(1, 9);
            splitPending = 0;
        } else if (splitPending == 0) {
            base += numbers.integer(1, 3);
        }
        int suffix = 0;
        if (splitPending > 0) {
            suffix = 2;
            splitPending = 0;
        } else if (!lastOfCounty && numbers.chance(0.12)) {
            suffix = 1;
            splitPending = 1;
        }
        region.tractCode[at(t)] = region.countyCode[at(county)] + format("%04d%02d", base, suffix);
        region.tractName[at(t)] = suffix == 0 ? format("Census Tract %d", base)
                                              : format("Census Tract %d.%02d", base, suffix);
    }
}

/// County codes rise in odd numbers through each state, as the census gives them.
void nameCounties(RegionLayout& region)
{
    PlaceNames names(region.seed ^ 0xc0c0);
    std::array<int, 3> perState{};
    for (int k = 0; k < region.counties.count(); ++k) {
        const int s = region.counties.parent[at(k)];
        region.countyCode.push_back(std::string(kStates[at(s)].code) +
                                    format("%03d", 2 * perState[at(s)]++ + 1));
        region.countyName.push_back(names.next(s == 0));
    }
}

/// Faults over the three states, the region's own first.
void layOutFaults(RegionLayout& region)
{
    Random random = region.stream(71);
    PlaceNames names(region.seed ^ 0xfa17);
    const std::vector<std::string> endings{"",       " Ridge",  " Valley", " Creek",
                                           " Hills", " Canyon", " Peak"};
    const auto makeFault = [&](Point centre, double azimuth, double length, const std::string& slip,
                               double dip) {
        Fault fault;
        fault.id = static_cast<int>(region.faults.size()) + 1;
        fault.name = names.next();
        fault.name += random.pick(endings);
        fault.name += (random.chance(0.3) ? " fault zone" : " fault");
        fault.slipType = slip;
        fault.dip = rounded(dip, 1.0);
        fault.slipRate = rounded(std::exp(random.uniform(std::log(0.1), std::log(25.0))), 0.1);
        fault.length = length;
        const Point a = offset(centre, azimuth, -length / 2);
        const Point b = offset(centre, azimuth, length / 2);
        const Path path = meander(random, a, b, 0.04, region.profile.pathSpacing);
        const int parts = random.chance(0.15) ? random.integer(2, 3) : 1;
        const double total = pathLength(path);
        for (int k = 0; k < parts; ++k) {
            // En-echelon pieces, each stepped a little to the side.
            Path piece = subPath(path, total * k / parts, total * (k + 0.92) / parts);
            const double step = (k % 2 == 0 ? 0.0 : 0.015);
            for (Point& p : piece) {
                p = offset(p, azimuth + kPi / 2, step);
            }
            fault.parts.push_back(std::move(piece));
        }
        region.faults.push_back(std::move(fault));
    };
    const auto kindOf = [&](int state, double& azimuth, double& dip) -> std::string {
        const double u = random.uniform();
        if (state == 1 || (state == 2 && u < 0.5)) {
            azimuth = kPi / 2 + random.uniform(-0.35, 0.35);
            dip = random.uniform(50, 70);
            return "Normal";
        }
        if (u < 0.6) {
            azimuth = kPi / 2 + 0.95 + random.uniform(-0.3, 0.3);
            dip = random.uniform(80, 90);
            return "Right-lateral strike-slip";
        }
        azimuth = kPi / 2 + 0.6 + random.uniform(-0.5, 0.5);
        if (u < 0.8) {
            dip = random.uniform(45, 65);
            return "Reverse";
        }
        dip = random.uniform(20, 40);
        return "Thrust";
    };

    // The region's own faults first: they are the scenario faults.
    const std::array<const char*, 5> regionKinds{"Right-lateral strike-slip",
                                                 "Right-lateral strike-slip", "Reverse",
                                                 "Right-lateral strike-slip", "Thrust"};
    const Point centre = region.geography.regionCentre();
    for (std::size_t k = 0; k < regionKinds.size(); ++k) {
        Point where = centre;
        for (int attempt = 0; attempt < 100; ++attempt) {
            const auto [angle, distance] = random.polar(0.2, 0.9);
            where = offset(centre, angle, k == 0 ? 0.1 : distance);
            if (region.inRegion(where)) {
                break;
            }
        }
        const std::string kind = regionKinds[k];
        const double dip = kind == "Reverse"  ? random.uniform(45, 65)
                           : kind == "Thrust" ? random.uniform(20, 40)
                                              : random.uniform(80, 90);
        const double azimuth = kPi / 2 + 0.95 + random.uniform(-0.2, 0.2);
        makeFault(where, azimuth, random.uniform(0.5, 1.3), kind, dip);
    }
    region.scenarioFaultCount = static_cast<int>(regionKinds.size());
    while (static_cast<int>(region.faults.size()) < region.profile.faults) {
        const Point where{random.uniform(kExtent.xmin(), kExtent.xmax()),
                          random.uniform(kExtent.ymin(), kExtent.ymax())};
        const int state = region.geography.stateAt(where);
        if (state < 0) {
            continue;
        }
        double azimuth = 0;
        double dip = 0;
        const std::string kind = kindOf(state, azimuth, dip);
        makeFault(where, azimuth, 0.1 * std::exp(random.uniform(0.0, std::log(15.0))), kind, dip);
    }
    for (int k = 0; k < region.scenarioFaultCount; ++k) {
        region.faults[at(k)].widthKm = rounded(random.uniform(12, 20), 0.5);
    }
}

/// The river whose dam may break and the one whose levees may fail.
void layOutRivers(RegionLayout& region)
{
    Random rivers = region.stream(20);
    const Point centre = region.geography.regionCentre();
    const double damEndY = centre.y - 0.35;
    region.damRiver = meander(rivers, offset(centre, -0.25, 0.75),
                              {region.geography.coastX(damEndY) + 0.02, damEndY}, 0.12, 0.01);
    region.leveeRiver =
        meander(rivers, offset(centre, 0.55, 1.0), offset(centre, 2.8, 0.3), 0.15, 0.01);
}

/// Highways, railways and pipelines from the region's city to the others.
void layOutRoutes(RegionLayout& region)
{
    Random& random = region.segmentStream;
    const auto& cities = region.geography.cities();
    const City& main = region.geography.regionCity();
    // Other cities by distance from the region's.
    std::vector<const City*> byDistance;
    for (const City& c : cities) {
        if (&c != &main) {
            byDistance.push_back(&c);
        }
    }
    std::stable_sort(byDistance.begin(), byDistance.end(), [&](auto* a, auto* b) {
        return groundDistance(a->location, main.location) <
               groundDistance(b->location, main.location);
    });
    const City* eastern = byDistance.front();
    for (const City* c : byDistance) {
        if (c->state == 1) {
            eastern = c;
            break;
        }
    }
    const double spacing = region.profile.pathSpacing;
    const auto route = [&](const std::string& name, const City& a, const City& b) {
        return Route{name, a.name, b.name, meander(random, a.location, b.location, 0.08, spacing)};
    };

    std::vector<Route>& highways = region.highways;
    const std::vector<std::string> highwayNames{"I-880", "I-680", "SR-24",
                                                "I-580", "SR-4",  "SR-152"};
    for (std::size_t k = 0; k < 5 && k < byDistance.size(); ++k) {
        highways.push_back(route(highwayNames[k], main, *byDistance[k]));
    }
    highways.push_back(route("I-80", main, *eastern));
    {
        const double y0 = main.location.y + 2.2;
        const double y1 = main.location.y - 2.2;
        Route coastal{"US-101", "north coast", "south coast",
                      meander(random, {region.geography.coastX(y0) + 0.2, y0},
                              {region.geography.coastX(y1) + 0.2, y1}, 0.05, spacing)};
        highways.push_back(std::move(coastal));
    }
    region.railways = {route("Coast Line", main, *byDistance[0]),
                       route("Valley Subdivision", main, *byDistance[1]),
                       route("Overland Route", main, *eastern)};
    const City& far = *byDistance[std::min<std::size_t>(3, byDistance.size() - 1)];
    region.pipelines = {
        {"Sierra Aqueduct", "Sierra", main.name,
         meander(random, {-119.9, main.location.y + 0.3}, main.location, 0.06, spacing)},
        route("Valley Gas Transmission Line 401", far, main),
        route("Bay Products Pipeline", main, *byDistance[0]),
        {"Lake Supply Main", "lake", byDistance[1]->name,
         meander(random, region.geography.lake().centre, byDistance[1]->location, 0.05, spacing)}};
}

} // namespace

RegionLayout::RegionLayout(SampleSize size, std::uint64_t randomSeed)
    : seed(randomSeed), profile(profileOf(size)), geography(randomSeed),
      lattice(kExtent, profile.latticeCells, randomSeed), curve(lattice),
      segmentStream(randomSeed, 60)
{
    layOutUnits(*this);
    chooseRegion(*this);
    countPeople(*this);
    nameCounties(*this);
    numberTracts(*this);
    regionName = geography.regionCity().name + " Metro";
    layOutFaults(*this);
    layOutRivers(*this);
    layOutRoutes(*this);
}

} // namespace brevant::samplehost
