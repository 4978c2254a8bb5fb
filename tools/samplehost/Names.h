#pragma once

#include "samplehost/Random.h"

#include <cstdio>
#include <set>
#include <string>
#include <vector>

namespace brevant::samplehost {

std::string format(const char* pattern, auto... values)
{
    char buffer[128];
    std::snprintf(buffer, sizeof buffer, pattern, values...);
    return buffer;
}

inline const std::vector<std::string> kWords = {
    "Alder",   "Ash",     "Aspen",    "Bear",   "Bell",    "Birch",  "Black",   "Blue",   "Bridge",
    "Brook",   "Buck",    "Cedar",    "Clear",  "Cliff",   "Copper", "Cotton",  "Coyote", "Crane",
    "Crow",    "Cypress", "Deer",     "Dove",   "Dry",     "Eagle",  "Elk",     "Elm",    "Fair",
    "Fern",    "Fox",     "Glen",     "Gold",   "Granite", "Green",  "Grey",    "Hawk",   "Hazel",
    "Heron",   "High",    "Holly",    "Iron",   "Juniper", "Lark",   "Laurel",  "Lone",   "Long",
    "Madrone", "Maple",   "Marsh",    "Meadow", "Mill",    "Mist",   "Moss",    "Oak",    "Otter",
    "Owl",     "Pine",    "Poplar",   "Quail",  "Raven",   "Red",    "Redwood", "Rock",   "Rose",
    "Sage",    "Salt",    "Sand",     "Shadow", "Silver",  "Snow",   "Spring",  "Stone",  "Storm",
    "Summit",  "Sun",     "Sycamore", "Thorn",  "Timber",  "Tule",   "Walnut",  "West",   "White",
    "Willow",  "Wind",    "Wolf"};
inline const std::vector<std::string> kPlaceEndings = {
    "ton",  "ville", "field", "wood",  "dale", "ford", "mont",  "view", "crest", "port",
    "burg", "haven", "brook", "stead", "more", "vale", "water", "wick", "bury",  "land"};
inline const std::vector<std::string> kPlaceWords = {"Valley", "Springs", "Hills", "Heights",
                                                     "Grove",  "Beach",   "Falls", "Creek"};
inline const std::vector<std::string> kSaints = {"Andres", "Benito", "Carlos", "Clara",  "Cruz",
                                                 "Felipe", "Inez",   "Lucia",  "Marcos", "Mateo",
                                                 "Paula",  "Rita",   "Rosa",   "Tomas",  "Ynez"};
inline const std::vector<std::string> kStreetEndings = {"St",  "Ave", "Blvd", "Rd",
                                                        "Way", "Dr",  "Ln"};

/// Place names that are never handed out twice.
class PlaceNames {
public:
    explicit PlaceNames(std::uint64_t seed) : m_random(seed, 90) {}

    std::string next(bool spanish = false)
    {
        for (int attempt = 0;; ++attempt) {
            std::string name;
            if (spanish && m_random.chance(0.5)) {
                name = m_random.chance(0.5) ? "San " : "Santa ";
                name += m_random.pick(kSaints);
            } else if (m_random.chance(0.25)) {
                name = m_random.pick(kWords) + " ";
                name += m_random.pick(kPlaceWords);
            } else {
                std::string ending = m_random.pick(kPlaceEndings);
                name = m_random.pick(kWords) + ending;
            }
            if (attempt > 50) {
                name += " " + std::to_string(m_used.size());
            }
            if (m_used.insert(name).second) {
                return name;
            }
        }
    }

private:
    Random m_random;
    std::set<std::string> m_used;
};

} // namespace brevant::samplehost
