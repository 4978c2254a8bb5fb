#pragma once

#include "platform/automation/Variant.h"

#include <QDialog>
#include <cstdint>
#include <vector>

class QComboBox;
class QGroupBox;
class QPushButton;

namespace brevant::selection {

/// The flood study-case window "Flood Study Case": lists the study cases of the region's
/// tabular database that have annual-loss results for analysis option 0 and hands back the
/// chosen one's identifier in m_StudyCaseId (0 unless OK was pressed on a listed case).
class frmFl : public QDialog {
public:
    explicit frmFl(QWidget* parent = nullptr);

    /// The one instance every caller shares; made on first use (a widget application must run).
    static frmFl& instance();

    /// Loads the form (m_StudyCaseId 0, the list filled afresh), shows it modally (see
    /// ui::qt::runModalWindow) and returns once OK, Cancel or the close box has unloaded it.
    void showModal();

    int16_t m_StudyCaseId = 0;

    /// The identifiers of the combo's items, in the same order.
    const std::vector<platform::automation::Variant>& studyCaseIds() const { return m_ids; }

private:
    void Form_Load();
    void CommandOk_Click();
    void CommandCancel_Click();

    std::vector<platform::automation::Variant> m_ids;
    QGroupBox* Frame1 = nullptr;
    QComboBox* flCombo = nullptr;
    QPushButton* CommandOk = nullptr;
    QPushButton* CommandCancel = nullptr;
};

} // namespace brevant::selection
