#pragma once

#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Row.h"

#include <QDialog>
#include <string>
#include <vector>

class QTreeWidget;

namespace brevant::selection {

/// The results window of the identify tool: the features found under a pixel, per layer, each
/// with its field values. Results stay until cleared, so several identifications can be
/// gathered in one list.
class IdentifyWindow : public QDialog {
public:
    explicit IdentifyWindow(QWidget* parent = nullptr);

    void clear();
    /// Adds a layer's features found at one place; a layer with none adds nothing.
    void addResults(const std::string& layerName,
                    const std::vector<platform::geodatabase::Row>& features);
    /// Features listed over all layers.
    int featureCount() const;
    /// Layers listed, in the order they were added.
    std::vector<std::string> layerNames() const;

private:
    void updateSummary();

    QTreeWidget* m_tree = nullptr;
};

} // namespace brevant::selection
