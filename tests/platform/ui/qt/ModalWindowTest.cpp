#include "platform/ui/qt/ModalWindow.h"

#include "platform/carto/Map.h"
#include "platform/display/widgets/MapWidget.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/HostFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace brevant::platform::ui::qt {
namespace {

DialogAction action(DialogAction::Kind kind, std::string name = {}, std::string source = {})
{
    DialogAction made;
    made.kind = kind;
    made.name = std::move(name);
    made.source = source.empty() ? made.name : std::move(source);
    return made;
}

/// A small window with one control of each kind and a map of the square 0..100.
class Window : public ::testing::Test {
protected:
    void SetUp() override
    {
        ensureWidgetApplication();
        m_script = std::make_shared<DialogScript>();
        installDialogScript(m_script);
        m_dialog.setObjectName("frmTest");
        m_dialog.setWindowTitle("Test Window");
        auto* layout = new QVBoxLayout(&m_dialog);
        m_ok = new QPushButton("OK", &m_dialog);
        m_ok->setObjectName("cmdOK");
        QObject::connect(m_ok, &QPushButton::clicked, &m_dialog, &QDialog::accept);
        m_name = new QLineEdit(&m_dialog);
        m_name->setObjectName("txtName");
        m_box = new QCheckBox("Shown", &m_dialog);
        m_box->setObjectName("chkShown");
        m_choice = new QComboBox(&m_dialog);
        m_choice->setObjectName("cboStyle");
        m_choice->addItems({"Solid", "Dash", "Dot"});
        m_mapWidget = new display::MapWidget(&m_dialog);
        m_mapWidget->setFixedSize(200, 200);
        m_map->setFullExtent(geometry::Envelope(0, 0, 100, 100));
        m_mapWidget->setMap(m_map);
        m_mapWidget->onMousePress([this](const display::MapMouseEvent& e) {
            m_pressed.push_back(e.point);
            m_shift.push_back(e.modifiers.testFlag(Qt::ShiftModifier));
        });
        m_mapWidget->onMouseRelease(
            [this](const display::MapMouseEvent& e) { m_released.push_back(e.point); });
        for (QWidget* widget :
             std::initializer_list<QWidget*>{m_ok, m_name, m_box, m_choice, m_mapWidget}) {
            layout->addWidget(widget);
        }
    }

    void TearDown() override { installDialogScript(nullptr); }

    DialogReport run()
    {
        runModalWindow(m_dialog, "frmTest");
        auto reports = m_script->takeReports();
        if (reports.size() != 1) {
            throw std::runtime_error("expected one window");
        }
        return reports.front();
    }

    std::shared_ptr<DialogScript> m_script;
    // Made before the dialog member: a widget needs the application, also when this test runs
    // in a process of its own.
    const bool m_application = (ensureWidgetApplication(), true);
    QDialog m_dialog;
    QPushButton* m_ok = nullptr;
    QLineEdit* m_name = nullptr;
    QCheckBox* m_box = nullptr;
    QComboBox* m_choice = nullptr;
    display::MapWidget* m_mapWidget = nullptr;
    std::shared_ptr<carto::Map> m_map = std::make_shared<carto::Map>();
    std::vector<geometry::Point> m_pressed;
    std::vector<geometry::Point> m_released;
    std::vector<bool> m_shift;
};

TEST_F(Window, RunsTheQueuedActionsInOrderAndReportsWhatItRead)
{
    auto text = action(DialogAction::Kind::Text, "txtName");
    text.text = "Bridges";
    auto check = action(DialogAction::Kind::Check, "chkShown");
    check.flag = true;
    auto choose = action(DialogAction::Kind::Choose, "cboStyle");
    choose.text = "Dot";
    m_script->queue({text, check, choose, action(DialogAction::Kind::Read, "txtName"),
                     action(DialogAction::Kind::Read, "cboStyle"),
                     action(DialogAction::Kind::Press, "cmdOK")});
    const auto report = run();
    EXPECT_EQ(report.form, "frmTest");
    EXPECT_EQ(report.caption, "Test Window");
    ASSERT_EQ(report.actions.size(), 6u);
    for (const auto& outcome : report.actions) {
        EXPECT_TRUE(outcome.ok) << outcome.action << ": " << outcome.error;
    }
    ASSERT_EQ(report.values.size(), 2u);
    EXPECT_EQ(report.values[0].text, "Bridges");
    EXPECT_TRUE(report.values[0].enabled);
    EXPECT_EQ(report.values[1].text, "Dot");
    EXPECT_EQ(report.closed, "accepted");
    EXPECT_TRUE(m_box->isChecked());
    EXPECT_EQ(m_script->pending(), 0u);
}

TEST_F(Window, WhenTheActionsRunOutTheCloseBoxClosesTheWindow)
{
    m_script->queue({action(DialogAction::Kind::Read, "chkShown")});
    const auto report = run();
    EXPECT_EQ(report.closed, "close box: the actions ran out");
    EXPECT_FALSE(m_dialog.isVisible());

    m_script->queue(
        {action(DialogAction::Kind::Close), action(DialogAction::Kind::Read, "chkShown")});
    const auto closed = run();
    EXPECT_EQ(closed.closed, "close box");
    EXPECT_EQ(m_script->pending(), 1u) << "what follows the close waits for the next window";
}

TEST_F(Window, BadActionsAreReportedAndChangeNothing)
{
    auto onButton = action(DialogAction::Kind::Text, "cmdOK");
    onButton.text = "x";
    auto outOfRange = action(DialogAction::Kind::Choose, "cboStyle");
    outOfRange.index = 7;
    m_box->setEnabled(false);
    auto disabled = action(DialogAction::Kind::Check, "chkShown");
    disabled.flag = true;
    m_script->queue({action(DialogAction::Kind::Press, "cmdNothing"), onButton, outOfRange,
                     disabled, action(DialogAction::Kind::Tool, "ZoomIn")});
    const auto report = run();
    ASSERT_EQ(report.actions.size(), 5u);
    EXPECT_EQ(report.actions[0].error, "no control named cmdNothing in frmTest");
    EXPECT_EQ(report.actions[1].error, "cmdOK is not a text box");
    EXPECT_EQ(report.actions[2].error, "cboStyle has no entry 7");
    EXPECT_EQ(report.actions[3].error, "chkShown is disabled");
    EXPECT_EQ(report.actions[4].error, "no tool ZoomIn in frmTest");
    EXPECT_EQ(m_choice->currentIndex(), 0);
    EXPECT_FALSE(m_box->isChecked());
    EXPECT_EQ(m_ok->text(), "OK");
}

TEST_F(Window, MapActionsArriveInMapCoordinatesAndPointsOutsideAreRefused)
{
    auto click = action(DialogAction::Kind::Click, {}, "click");
    click.coordinates = {25, 75};
    click.flag = true;
    auto drag = action(DialogAction::Kind::Drag, {}, "drag");
    drag.coordinates = {10, 10, 90, 40};
    auto outside = action(DialogAction::Kind::Click, {}, "outside");
    outside.coordinates = {250, 50};
    m_script->queue({click, drag, outside});
    const auto report = run();
    ASSERT_EQ(report.actions.size(), 3u);
    EXPECT_TRUE(report.actions[0].ok);
    EXPECT_TRUE(report.actions[1].ok);
    EXPECT_FALSE(report.actions[2].ok);
    EXPECT_NE(report.actions[2].error.find("outside the map"), std::string::npos);

    ASSERT_EQ(m_pressed.size(), 2u) << "the point outside reached nobody";
    const double pixel = 100.0 / 200.0;
    EXPECT_NEAR(m_pressed[0].x, 25, pixel);
    EXPECT_NEAR(m_pressed[0].y, 75, pixel);
    EXPECT_TRUE(m_shift[0]);
    EXPECT_FALSE(m_shift[1]);
    ASSERT_EQ(m_released.size(), 2u);
    EXPECT_NEAR(m_released[1].x, 90, pixel);
    EXPECT_NEAR(m_released[1].y, 40, pixel);
}

TEST_F(Window, ScreenshotsAndColourAnswers)
{
    test::TempDir dir;
    const auto png = (dir.path() / "window.png").string();
    auto colour = action(DialogAction::Kind::Colour);
    colour.colour = 0x0000FF;
    m_script->queue({action(DialogAction::Kind::Screenshot, png), colour});
    const auto report = run();
    EXPECT_TRUE(report.actions.at(0).ok) << report.actions.at(0).error;
    const QImage shot(QString::fromStdString(png));
    EXPECT_EQ(shot.size(), m_dialog.size());

    ScriptedPrompts prompts;
    prompts.queueAnswer("#00FF00");
    EXPECT_EQ(prompts.colourDialog(0, ColourDialogFlags::PresetColour, "Marker Color"), 0x0000FF)
        << "the window's answer comes first";
    EXPECT_EQ(prompts.colourDialog(0, ColourDialogFlags::PresetColour, "Marker Color"), 0x00FF00);
}

} // namespace
} // namespace brevant::platform::ui::qt
