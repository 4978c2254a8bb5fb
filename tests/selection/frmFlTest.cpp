#include "selection/frmFl.h"

#include "context/EqShape.h"
#include "context/StudyRegionContext.h"
#include "platform/tabular/Connection.h"
#include "platform/ui/DialogScript.h"
#include "platform/ui/qt/ModalWindow.h"
#include "selection/EQMapSelDlg.h"
#include "support/HostFixture.h"

#include <QComboBox>
#include <gtest/gtest.h>

namespace brevant::selection {
namespace {

namespace ui = platform::ui;

ui::DialogAction action(ui::DialogAction::Kind kind, const std::string& name,
                        std::optional<int> index = std::nullopt)
{
    ui::DialogAction a;
    a.kind = kind;
    a.name = name;
    a.index = index;
    return a;
}

const ui::DialogAction readCombo = action(ui::DialogAction::Kind::Read, "flCombo");
const ui::DialogAction ok = action(ui::DialogAction::Kind::Press, "CommandOk");
const ui::DialogAction cancel = action(ui::DialogAction::Kind::Press, "CommandCancel");

std::size_t occurrences(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class FloodStudyCase : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        ui::qt::ensureWidgetApplication();
        m_dialog = std::make_shared<EQMapSelDlg>();
        m_script = std::make_shared<ui::DialogScript>();
        ui::installDialogScript(m_script);
    }

    void TearDown() override
    {
        ui::installDialogScript(nullptr);
        m_dialog.reset();
        HostFixture::TearDown();
    }

    std::shared_ptr<platform::tabular::Connection> region()
    {
        return platform::tabular::Connection::connect(
            context::studyRegionContext().RegionDatabaseName);
    }

    void createTables()
    {
        region()->execute(
            "CREATE TABLE IF NOT EXISTS flStudyCase (StudyCaseId INTEGER PRIMARY KEY, "
            "StudyCasename TEXT);"
            "CREATE TABLE IF NOT EXISTS flFRGBSEcLossBySOccup (StudyCaseId INTEGER, "
            "ReturnPeriodId TEXT, AnalysisOptId INTEGER, SOccup TEXT, TotalLoss REAL)");
    }

    void addCase(int id, const std::string& name,
                 const std::vector<std::pair<std::string, int>>& results)
    {
        auto db = region();
        db->execute("INSERT INTO flStudyCase VALUES (" + std::to_string(id) + ", '" + name + "')");
        for (const auto& [period, option] : results) {
            // Two occupancies per result, so the grouping has rows to fold.
            for (const char* occupancy : {"RES1", "COM1"}) {
                db->execute("INSERT INTO flFRGBSEcLossBySOccup VALUES (" + std::to_string(id) +
                            ", '" + period + "', " + std::to_string(option) + ", '" + occupancy +
                            "', 12.5)");
            }
        }
    }

    /// Runs GetflStudyCaseId with `actions` queued; returns the window's report.
    ui::DialogReport choose(int16_t& studyCaseId, std::vector<ui::DialogAction> actions)
    {
        m_script->queue(std::move(actions));
        m_dialog->GetflStudyCaseId(studyCaseId);
        auto reports = m_script->takeReports();
        EXPECT_EQ(reports.size(), 1u);
        return reports.empty() ? ui::DialogReport{} : reports.front();
    }

    std::vector<std::string> listed() const
    {
        std::vector<std::string> names;
        const auto* combo = frmFl::instance().findChild<QComboBox*>("flCombo");
        for (int i = 0; i < combo->count(); ++i) {
            names.push_back(combo->itemText(i).toStdString());
        }
        return names;
    }

    std::shared_ptr<EQMapSelDlg> m_dialog;
    std::shared_ptr<ui::DialogScript> m_script;
};

TEST_F(FloodStudyCase, ListsOnlyCasesWithAnnualResultsOfOptionZeroAndOkTakesTheFirst)
{
    createTables();
    addCase(3, "Levee breach", {{"Annual", 0}, {"100", 0}});
    addCase(5, "Coastal surge", {{"Annual", 0}});
    addCase(7, "Dam release", {{"100", 0}, {"500", 0}});
    addCase(8, "Lake seiche", {{"Annual", 1}});
    addCase(9, "annual only in lower case", {{"annual", 0}});
    addCase(11, "Draft case", {});

    int16_t id = 42;
    const auto report = choose(id, {readCombo, ok});
    EXPECT_EQ(report.form, "frmFl");
    EXPECT_EQ(report.caption, "Flood Study Case");
    ASSERT_EQ(report.values.size(), 1u);
    EXPECT_EQ(report.values[0].text, "Levee breach") << "the first case is selected";
    EXPECT_EQ(report.closed, "accepted");
    EXPECT_EQ(id, 3);
    EXPECT_EQ(listed(), (std::vector<std::string>{"Levee breach", "Coastal surge"}));
    EXPECT_EQ(frmFl::instance().studyCaseIds(),
              (std::vector<platform::automation::Variant>{platform::automation::Variant(3),
                                                          platform::automation::Variant(5)}));
    EXPECT_EQ(errorLog(), "");
}

TEST_F(FloodStudyCase, OkTakesTheChosenItemsIdentifierAndCancelGivesZero)
{
    createTables();
    addCase(3, "Levee breach", {{"Annual", 0}});
    addCase(5, "Coastal surge", {{"Annual", 0}});

    int16_t id = 0;
    choose(id, {action(ui::DialogAction::Kind::Choose, "flCombo", 1), ok});
    EXPECT_EQ(id, 5) << "item 1 has its identifier at position 2";

    const auto cancelled =
        choose(id, {action(ui::DialogAction::Kind::Choose, "flCombo", 1), cancel});
    EXPECT_EQ(id, 0);
    EXPECT_EQ(cancelled.closed, "closed");

    id = 5;
    choose(id, {});
    EXPECT_EQ(id, 0) << "the close box chooses nothing either";

    // Shown again, the form is loaded afresh: the case added since is listed once.
    addCase(4, "Combined river and coast", {{"Annual", 0}});
    choose(id, {ok});
    EXPECT_EQ(listed(), (std::vector<std::string>{"Levee breach", "Combined river and coast",
                                                  "Coastal surge"}));
    EXPECT_EQ(id, 3);
}

// A case number too wide for the answer is listed; choosing it fails at OK, recorded, with the
// form left open.
TEST_F(FloodStudyCase, ACaseBeyondSixteenBitsIsListedButCannotBeHandedBack)
{
    createTables();
    addCase(3, "Levee breach", {{"Annual", 0}});
    addCase(70000, "Imported case", {{"Annual", 0}});

    int16_t id = 42;
    const auto report =
        choose(id, {action(ui::DialogAction::Kind::Choose, "flCombo", 1), ok, cancel});
    EXPECT_EQ(listed(), (std::vector<std::string>{"Levee breach", "Imported case"}));
    ASSERT_EQ(report.actions.size(), 3u);
    EXPECT_TRUE(report.actions[2].ok) << "still open after the failed OK";
    EXPECT_EQ(id, 0);
    EXPECT_EQ(occurrences(errorLog(), " CommandOk_Click"), 1u) << errorLog();
}

TEST_F(FloodStudyCase, NoCaseFoundIsRecordedAndOkOnTheEmptyListGivesZero)
{
    createTables();
    addCase(7, "Dam release", {{"100", 0}});

    int16_t id = 42;
    const auto report = choose(id, {readCombo, ok});
    ASSERT_EQ(report.actions.size(), 2u);
    EXPECT_TRUE(report.actions[1].ok) << "the form stays open after the failed fill";
    EXPECT_EQ(report.closed, "accepted");
    EXPECT_EQ(id, 0);
    EXPECT_TRUE(listed().empty());
    EXPECT_EQ(occurrences(errorLog(), " Getting Study Case for the flood "), 1u) << errorLog();
    EXPECT_EQ(errorLog().find(" GetflStudyCaseId"), std::string::npos)
        << "the form's own trap records it; the call goes on";
}

TEST_F(FloodStudyCase, AnUnreachableDatabaseIsRecordedWithTheFormStillShown)
{
    // The fixture's region database has no flood tables at all.
    int16_t id = 42;
    const auto report = choose(id, {readCombo, cancel});
    ASSERT_EQ(report.values.size(), 1u);
    EXPECT_TRUE(report.values[0].enabled);
    EXPECT_EQ(report.closed, "closed");
    EXPECT_EQ(id, 0);
    EXPECT_NE(errorLog().find(" Getting Study Case for the flood "), std::string::npos)
        << errorLog();
}

} // namespace
} // namespace brevant::selection
