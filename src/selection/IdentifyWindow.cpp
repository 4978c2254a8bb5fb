#include "selection/IdentifyWindow.h"

#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace brevant::selection {

namespace {

std::string shownValue(const platform::automation::Variant& value)
{
    try {
        return value.isNull() ? "<Null>" : value.toString();
    } catch (const std::exception&) {
        return "<not shown>";
    }
}

} // namespace

IdentifyWindow::IdentifyWindow(QWidget* parent) : QDialog(parent)
{
    setObjectName("IdentifyWindow");
    setWindowTitle("Identify Results");
    setModal(false);
    m_tree = new QTreeWidget(this);
    m_tree->setObjectName("lstResults");
    m_tree->setColumnCount(2);
    m_tree->setHeaderLabels({"Field", "Value"});
    m_tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tree);
    resize(360, 300);
    updateSummary();
}

void IdentifyWindow::clear()
{
    m_tree->clear();
    updateSummary();
}

void IdentifyWindow::addResults(const std::string& layerName,
                                const std::vector<platform::geodatabase::Row>& features)
{
    if (features.empty()) {
        return;
    }
    auto* layer = new QTreeWidgetItem(m_tree, QStringList{QString::fromStdString(layerName)});
    layer->setData(0, Qt::UserRole, 1);
    for (const auto& feature : features) {
        auto* node =
            new QTreeWidgetItem(layer, QStringList{"OBJECTID " + QString::number(feature.oid())});
        const auto& fields = feature.fields();
        // Field 0 is the identifier in the node's title and field 1 the shape: neither is a value
        // a reader wants to see again.
        for (int i = 2; i < fields.count(); ++i) {
            new QTreeWidgetItem(node,
                                QStringList{QString::fromStdString(fields.field(i).alias()),
                                            QString::fromStdString(shownValue(feature.value(i)))});
        }
    }
    layer->setExpanded(true);
    if (layer->childCount() > 0) {
        layer->child(0)->setExpanded(true);
    }
    updateSummary();
}

int IdentifyWindow::featureCount() const
{
    int count = 0;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        count += m_tree->topLevelItem(i)->childCount();
    }
    return count;
}

std::vector<std::string> IdentifyWindow::layerNames() const
{
    std::vector<std::string> names;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        names.push_back(m_tree->topLevelItem(i)->text(0).toStdString());
    }
    return names;
}

void IdentifyWindow::updateSummary()
{
    // What a script reads from the list: how much it holds.
    m_tree->setProperty("value", QString::number(featureCount()) + " features in " +
                                     QString::number(m_tree->topLevelItemCount()) + " layers");
}

} // namespace brevant::selection
