#include "selection/frmFl.h"

#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/tabular/Connection.h"
#include "platform/ui/qt/ModalWindow.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace brevant::selection {

namespace {

// The pieces as the form has always joined them; the doubled blanks are part of the statement.
const std::string StudyCaseQuery =
    std::string(
        "Select A.StudyCaseId,A.StudyCasename from flFRGBSEcLossBySOccup B, flStudyCase A ") +
    " Where A.StudyCaseId = B.StudyCaseId and B.ReturnPeriodId = " + "'" + "Annual" + "'" +
    " And  B.AnalysisOptId = 0 " +
    " and A.StudyCaseId = B.StudyCaseId   group by A.StudyCaseId,A.StudyCasename ";

} // namespace

frmFl::frmFl(QWidget* parent) : QDialog(parent)
{
    setObjectName("frmFl");
    setWindowTitle("Flood Study Case");
    Frame1 = new QGroupBox("Select the study case for flood :", this);
    Frame1->setObjectName("Frame1");
    flCombo = new QComboBox(Frame1);
    flCombo->setObjectName("flCombo");
    flCombo->setMinimumWidth(260);
    // Shown while no case is selected, which is what an empty list leaves.
    flCombo->setPlaceholderText("FlCombolist");
    auto* frameLayout = new QVBoxLayout(Frame1);
    frameLayout->addWidget(flCombo);

    CommandOk = new QPushButton("OK", this);
    CommandOk->setObjectName("CommandOk");
    CommandOk->setDefault(true);
    CommandCancel = new QPushButton("Cancel", this);
    CommandCancel->setObjectName("CommandCancel");
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(CommandOk);
    buttons->addWidget(CommandCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(Frame1);
    layout->addLayout(buttons);

    connect(CommandOk, &QPushButton::clicked, this, [this] { CommandOk_Click(); });
    connect(CommandCancel, &QPushButton::clicked, this, [this] { CommandCancel_Click(); });
}

frmFl& frmFl::instance()
{
    static frmFl* form = new frmFl;
    return *form;
}

void frmFl::showModal()
{
    Form_Load();
    platform::ui::qt::runModalWindow(*this, "frmFl");
}

void frmFl::Form_Load()
{
    m_StudyCaseId = 0;
    m_ids.clear();
    flCombo->clear();
    context::runLogged(
        " Getting Study Case for the flood ", platform::automation::LibraryCode::ClassInit, [this] {
            const auto& connectionString = context::studyRegionContext().RegionDatabaseName;
            auto connection = platform::tabular::Connection::connect(connectionString, "", "");
            auto cases = connection->open(StudyCaseQuery);
            // No matching case leaves no first row: that is the error recorded.
            cases->moveFirst();
            const int32_t count = cases->recordCount();
            for (int32_t i = 0; i < count; ++i) {
                flCombo->addItem(QString::fromStdString(cases->value(1).toString()));
                m_ids.push_back(cases->value(0));
                cases->moveNext();
            }
            cases->close();
            connection->close();
            flCombo->setCurrentIndex(0);
        });
}

void frmFl::CommandOk_Click()
{
    // A case number beyond 16 bits cannot be handed back: that is recorded and the form stays
    // open for another choice.
    context::runLogged(" CommandOk_Click", platform::automation::LibraryCode::Procedure, [this] {
        const int index = flCombo->currentIndex();
        // Nothing listed means nothing chosen: 0, as Cancel gives.
        m_StudyCaseId = index >= 0 && static_cast<std::size_t>(index) < m_ids.size()
                            ? m_ids[static_cast<std::size_t>(index)].toInt16()
                            : int16_t{0};
        accept();
    });
}

void frmFl::CommandCancel_Click()
{
    m_StudyCaseId = 0;
    reject();
}

} // namespace brevant::selection
