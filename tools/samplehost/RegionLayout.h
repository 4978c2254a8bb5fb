#pragma once

#include "samplehost/Geography.h"
#include "samplehost/Lattice.h"
#include "samplehost/Random.h"
#include "samplehost/SampleSources.h"
#include "samplehost/Shapes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace brevant::samplehost {

/// How many of everything a sample size gets.
struct Profile {
    std::int64_t latticeCells;
    std::array<int, 3> counties;
    int regionCounties;
    int tracts;
    int blocks;
    std::array<std::int64_t, 4> siteMapPolygons;
    double inundationCell;
    double floodViewCell;
    double usgsStep;
    double pathSpacing;
    int schools, hospitals, fireStations, policeStations, emergencyCenters, bridges;
    std::int64_t buildings;
    int highwaySegments, railSegments, pipelineSegments;
    int epicentres, faults, marPlot;
};

Profile profileOf(SampleSize size);

struct Fault {
    int id;
    std::string name;
    std::string slipType;
    double dip;
    double slipRate;
    std::vector<Path> parts;
    double length; // degrees
    /// Drawn for the region's scenario faults only.
    double widthKm = 0;
};

struct Route {
    std::string name;
    std::string from;
    std::string to;
    Path path;
};

/// The region every layer of a sample host describes, laid out once from a size and a seed
/// and not changed afterwards: the land and its cities, the cells of the lattice grouped into
/// states, counties, tracts and blocks with their codes, names and people, the counties of the
/// study region, the faults, the two rivers that flood and the routes the lines follow. The
/// writers of the layer families read it; none of them draws anything another one needs.
struct RegionLayout {
    RegionLayout(SampleSize size, std::uint64_t seed);

    /// The numbers of layer `id`: every layer draws from its own stream.
    Random stream(std::uint64_t id) const { return Random(seed, id); }
    int stateOfCell(int cell) const { return cell < 0 ? -1 : states.label[at(cell)]; }
    bool inRegion(int cell) const { return cell >= 0 && regionCell[at(cell)] != 0; }
    bool inRegion(Point p) const { return inRegion(lattice.cellAt(p)); }
    int stateOfTract(int tract) const { return counties.parent[at(tracts.parent[at(tract)])]; }

    std::uint64_t seed;
    Profile profile;
    Geography geography;
    Lattice lattice;
    CurveOrder curve;

    /// People per cell, in relative terms.
    std::vector<float> density;
    Units states;
    Units counties;
    Units tracts;
    Units blocks;

    /// Per county and per cell: 1 in the study region.
    std::vector<char> regionCounty;
    std::vector<char> regionCell;
    /// The region's cells, widened by one cell side.
    Envelope regionBox;
    std::string regionName;

    std::vector<std::int64_t> tractPopulation;
    /// Blocks share their tract's people exactly.
    std::vector<std::int64_t> blockPopulation;
    std::vector<std::string> countyCode;
    std::vector<std::string> countyName;
    std::vector<std::string> tractCode;
    std::vector<std::string> tractName;

    /// The region's own faults first: they are the scenario faults.
    std::vector<Fault> faults;
    int scenarioFaultCount = 0;

    Path damRiver;
    Path leveeRiver;

    std::vector<Route> highways;
    std::vector<Route> railways;
    std::vector<Route> pipelines;
    /// Where the routes left their stream: the lines are cut into segments from here on, as
    /// they always were, so that a seed keeps giving the same segments.
    Random segmentStream;
};

} // namespace brevant::samplehost
