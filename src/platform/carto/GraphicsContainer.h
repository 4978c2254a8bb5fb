#pragma once

#include <memory>
#include <vector>

namespace brevant::platform::carto {

class Element;
class Map;
class MapFrame;

/// The elements of a page in drawing order: the first is drawn first, the last lies in front.
class GraphicsContainer {
public:
    const std::vector<std::shared_ptr<Element>>& elements() const { return m_elements; }
    int count() const { return static_cast<int>(m_elements.size()); }
    /// Throws PlatformError (9) for an index outside 0..count-1.
    const std::shared_ptr<Element>& element(int index) const;

    /// Puts an element in front of the others; throws PlatformError for a null element.
    void addElement(std::shared_ptr<Element> element);
    /// Returns whether the element was in the container.
    bool deleteElement(const std::shared_ptr<Element>& element);
    void deleteAllElements() { m_elements.clear(); }
    /// The first map frame showing `map`, or null.
    std::shared_ptr<MapFrame> findFrame(const Map& map) const;

private:
    std::vector<std::shared_ptr<Element>> m_elements;
};

} // namespace brevant::platform::carto
