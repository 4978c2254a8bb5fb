#include "platform/ui/qt/ModalWindow.h"

#include "platform/carto/Map.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/widgets/MapWidget.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QEventLoop>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QPointer>
#include <stdexcept>

namespace brevant::platform::ui::qt {

namespace {

QGuiApplication* makeWidgetApplication(int& argc, char** argv)
{
    return new QApplication(argc, argv);
}

/// Why an action could not run; it changed nothing.
struct ActionRefused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

QString toQt(const std::string& text)
{
    return QString::fromStdString(text);
}

class ActionRunner {
public:
    ActionRunner(QWidget& window, DialogScript& script, DialogReport& report)
        : m_window(window), m_script(script), m_report(report)
    {
    }

    void run(const DialogAction& action)
    {
        switch (action.kind) {
        case DialogAction::Kind::Tool:
            return tool(action.name);
        case DialogAction::Kind::Click:
            return click(action);
        case DialogAction::Kind::Drag:
            return drag(action);
        case DialogAction::Kind::Move:
            return move(action);
        case DialogAction::Kind::Press:
            return press(action.name);
        case DialogAction::Kind::Select:
            return select(action.name, action.index.value_or(-1));
        case DialogAction::Kind::Check:
            return check(action.name, action.flag);
        case DialogAction::Kind::Text:
            return text(action.name, action.text);
        case DialogAction::Kind::Choose:
            return choose(action);
        case DialogAction::Kind::Menu:
            return menu(action.name);
        case DialogAction::Kind::Read:
            return read(action.name);
        case DialogAction::Kind::Colour:
            m_script.answerNextColour(action.colour);
            return;
        case DialogAction::Kind::Screenshot:
            if (!screenshot().save(toQt(action.name), "PNG")) {
                throw ActionRefused("cannot write " + action.name);
            }
            return;
        case DialogAction::Kind::Close:
            m_window.close();
            return;
        }
    }

private:
    /// The window with the windows it has open beside it (a results list), where they stand.
    QPixmap screenshot() const
    {
        std::vector<QWidget*> shown{&m_window};
        for (auto* child : m_window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
            if (child->isWindow() && child->isVisible()) {
                shown.push_back(child);
            }
        }
        if (shown.size() == 1) {
            return m_window.grab();
        }
        QRect area;
        for (auto* window : shown) {
            area = area.united(window->geometry());
        }
        QPixmap picture(area.size());
        picture.fill(QColor(200, 200, 200));
        QPainter painter(&picture);
        for (auto* window : shown) {
            painter.drawPixmap(window->geometry().topLeft() - area.topLeft(), window->grab());
        }
        return picture;
    }

    QObject& control(const std::string& name) const
    {
        auto* found = m_window.findChild<QObject*>(toQt(name));
        if (found == nullptr) {
            throw ActionRefused("no control named " + name + " in " + m_report.form);
        }
        return *found;
    }

    static void requireEnabled(const QWidget& widget, const std::string& name)
    {
        if (!widget.isEnabled()) {
            throw ActionRefused(name + " is disabled");
        }
    }

    template <class Widget> Widget& controlOf(const std::string& name, const char* what) const
    {
        auto* widget = qobject_cast<Widget*>(&control(name));
        if (widget == nullptr) {
            throw ActionRefused(name + " is not " + what);
        }
        return *widget;
    }

    void tool(const std::string& key)
    {
        for (auto* action : m_window.findChildren<QAction*>()) {
            if (action->objectName() == toQt(key) ||
                action->property("key").toString() == toQt(key)) {
                if (!action->isVisible()) {
                    throw ActionRefused("tool " + key + " is hidden");
                }
                if (!action->isEnabled()) {
                    throw ActionRefused("tool " + key + " is disabled");
                }
                action->trigger();
                return;
            }
        }
        throw ActionRefused("no tool " + key + " in " + m_report.form);
    }

    display::MapWidget& mapWidget() const
    {
        // MapWidget has no meta-object of its own, so findChild<MapWidget*> would match any
        // widget.
        for (auto* widget : m_window.findChildren<QWidget*>()) {
            if (auto* map = dynamic_cast<display::MapWidget*>(widget); map && map->map()) {
                return *map;
            }
        }
        throw ActionRefused(m_report.form + " shows no map");
    }

    QPoint pixelOf(display::MapWidget& map, double x, double y) const
    {
        const auto pixel = map.toWidget(geometry::Point{x, y});
        if (!pixel) {
            throw ActionRefused("the point (" + std::to_string(x) + ", " + std::to_string(y) +
                                ") lies outside the map");
        }
        return *pixel;
    }

    static void send(QWidget& target, QEvent::Type type, QPoint at, Qt::MouseButton button,
                     Qt::MouseButtons held, Qt::KeyboardModifiers modifiers)
    {
        QMouseEvent event(type, QPointF(at), QPointF(target.mapToGlobal(at)), button, held,
                          modifiers);
        QCoreApplication::sendEvent(&target, &event);
    }

    static Qt::KeyboardModifiers modifiersOf(const DialogAction& action)
    {
        return action.flag ? Qt::ShiftModifier : Qt::NoModifier;
    }

    void click(const DialogAction& action)
    {
        auto& map = mapWidget();
        const QPoint at = pixelOf(map, action.coordinates.at(0), action.coordinates.at(1));
        send(map, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton,
             modifiersOf(action));
        send(map, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton,
             modifiersOf(action));
    }

    void drag(const DialogAction& action)
    {
        auto& map = mapWidget();
        const auto& c = action.coordinates;
        const QPoint from = pixelOf(map, c.at(0), c.at(1));
        const QPoint to = pixelOf(map, c.at(2), c.at(3));
        send(map, QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton,
             modifiersOf(action));
        send(map, QEvent::MouseMove, (from + to) / 2, Qt::NoButton, Qt::LeftButton,
             modifiersOf(action));
        send(map, QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, modifiersOf(action));
        send(map, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton,
             modifiersOf(action));
    }

    void move(const DialogAction& action)
    {
        auto& map = mapWidget();
        const QPoint at = pixelOf(map, action.coordinates.at(0), action.coordinates.at(1));
        send(map, QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, modifiersOf(action));
    }

    void press(const std::string& name)
    {
        auto& button = controlOf<QAbstractButton>(name, "a button");
        requireEnabled(button, name);
        button.click();
    }

    void check(const std::string& name, bool checked)
    {
        auto& box = controlOf<QAbstractButton>(name, "a check box");
        if (!box.isCheckable()) {
            throw ActionRefused(name + " is not a check box");
        }
        requireEnabled(box, name);
        // A user changes a box by clicking it, so the box's click handling runs.
        if (box.isChecked() != checked) {
            box.click();
        }
    }

    void select(const std::string& name, int index)
    {
        auto& object = control(name);
        if (auto* combo = qobject_cast<QComboBox*>(&object)) {
            return chooseIndex(*combo, name, index);
        }
        auto* list = qobject_cast<QListWidget*>(&object);
        if (list == nullptr) {
            throw ActionRefused(name + " is not a list");
        }
        requireEnabled(*list, name);
        if (index < 0 || index >= list->count()) {
            throw ActionRefused(name + " has no line " + std::to_string(index));
        }
        // Clicked as a user would, so the list's mouse and click handling both run.
        auto* item = list->item(index);
        list->scrollToItem(item);
        const QPoint at = list->visualItemRect(item).center();
        send(*list->viewport(), QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton,
             Qt::NoModifier);
        send(*list->viewport(), QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton,
             Qt::NoModifier);
    }

    void text(const std::string& name, const std::string& value)
    {
        auto& box = controlOf<QLineEdit>(name, "a text box");
        requireEnabled(box, name);
        if (box.isReadOnly()) {
            throw ActionRefused(name + " is read-only");
        }
        box.setText(toQt(value));
    }

    static void chooseIndex(QComboBox& combo, const std::string& name, int index)
    {
        requireEnabled(combo, name);
        if (index < 0 || index >= combo.count()) {
            throw ActionRefused(name + " has no entry " + std::to_string(index));
        }
        combo.setCurrentIndex(index);
    }

    void choose(const DialogAction& action)
    {
        auto& combo = controlOf<QComboBox>(action.name, "a drop-down list");
        int index = action.index.value_or(-1);
        if (!action.index) {
            index = combo.findText(toQt(action.text));
            if (index < 0) {
                throw ActionRefused(action.name + " has no entry \"" + action.text + "\"");
            }
        }
        chooseIndex(combo, action.name, index);
    }

    void menu(const std::string& item)
    {
        for (auto* action : m_window.findChildren<QAction*>()) {
            if (action->isSeparator()) {
                continue;
            }
            if (action->objectName() == toQt(item) || action->text() == toQt(item)) {
                auto* popup = qobject_cast<QMenu*>(action->parent());
                if (popup != nullptr && !popup->isVisible()) {
                    openPopup(*popup);
                }
                const bool enabled = action->isEnabled();
                if (enabled) {
                    action->trigger();
                }
                if (popup != nullptr) {
                    popup->hide();
                }
                if (!enabled) {
                    throw ActionRefused("menu item " + item + " is disabled");
                }
                return;
            }
        }
        throw ActionRefused("no menu item " + item + " in " + m_report.form);
    }

    /// Opens a popup menu as a user does: a right press on the control that opens it, on its
    /// selected line for a list.
    void openPopup(QMenu& popup)
    {
        const QString opener = popup.property("opener").toString();
        if (opener.isEmpty()) {
            return;
        }
        auto* widget = qobject_cast<QWidget*>(&control(opener.toStdString()));
        if (widget == nullptr) {
            return;
        }
        QWidget* target = widget;
        QPoint at = widget->rect().center();
        if (auto* list = qobject_cast<QListWidget*>(widget)) {
            target = list->viewport();
            if (auto* current = list->currentItem()) {
                at = list->visualItemRect(current).center();
            }
        }
        send(*target, QEvent::MouseButtonPress, at, Qt::RightButton, Qt::RightButton,
             Qt::NoModifier);
        send(*target, QEvent::MouseButtonRelease, at, Qt::RightButton, Qt::NoButton,
             Qt::NoModifier);
    }

    void read(const std::string& name)
    {
        auto& object = control(name);
        ControlReading reading{name};
        if (auto* action = qobject_cast<QAction*>(&object)) {
            reading.text = action->text().toStdString();
            reading.checked = action->isChecked();
            reading.enabled = action->isEnabled();
            reading.visible = action->isVisible();
        } else if (auto* widget = qobject_cast<QWidget*>(&object)) {
            reading.enabled = widget->isEnabled();
            reading.visible = widget->isVisible();
            if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
                reading.text = button->text().toStdString();
                reading.checked = button->isChecked();
            } else if (auto* line = qobject_cast<QLineEdit*>(widget)) {
                reading.text = line->text().toStdString();
            } else if (auto* list = qobject_cast<QListWidget*>(widget)) {
                if (auto* current = list->currentItem()) {
                    reading.text = current->text().toStdString();
                }
            } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
                reading.text = combo->currentText().toStdString();
            } else if (auto* label = qobject_cast<QLabel*>(widget)) {
                reading.text = label->text().toStdString();
            } else if (auto* group = qobject_cast<QGroupBox*>(widget)) {
                reading.text = group->title().toStdString();
                reading.checked = group->isChecked();
            } else if (auto* menu = qobject_cast<QMenu*>(widget)) {
                reading.text = menu->title().toStdString();
            } else {
                reading.text = widget->windowTitle().toStdString();
            }
        } else {
            throw ActionRefused(name + " cannot be read");
        }
        // A control that shows its value other than as text (a colour box) names it here.
        if (const QVariant value = object.property("value"); value.isValid()) {
            reading.text = value.toString().toStdString();
        }
        m_report.values.push_back(std::move(reading));
    }

    QWidget& m_window;
    DialogScript& m_script;
    DialogReport& m_report;
};

void runScripted(QWidget& window, const std::string& form, DialogScript* script)
{
    DialogScript none;
    DialogScript& actions = script ? *script : none;
    DialogReport report{form, window.windowTitle().toStdString()};
    report.platform = QGuiApplication::platformName().toStdString();
    QPointer<QWidget> guard(&window);
    window.show();
    QCoreApplication::processEvents();
    ActionRunner runner(window, actions, report);
    while (guard && window.isVisible()) {
        auto action = actions.next();
        if (!action) {
            window.close();
            if (window.isVisible()) {
                // The window refused its close box; nobody is left to close it another way.
                window.hide();
                report.closed = "hidden: the actions ran out and the window refused to close";
            } else {
                report.closed = "close box: the actions ran out";
            }
            break;
        }
        ActionOutcome outcome{action->source};
        try {
            runner.run(*action);
        } catch (const std::exception& e) {
            outcome.ok = false;
            outcome.error = e.what();
        }
        report.actions.push_back(std::move(outcome));
        QCoreApplication::processEvents();
        if (action->kind == DialogAction::Kind::Close && !window.isVisible()) {
            report.closed = "close box";
        }
    }
    if (report.closed.empty()) {
        auto* dialog = qobject_cast<QDialog*>(&window);
        report.closed = dialog && dialog->result() == QDialog::Accepted ? "accepted" : "closed";
    }
    if (script != nullptr) {
        script->addReport(std::move(report));
    }
}

} // namespace

void useWidgetApplication()
{
    display::setApplicationFactory(&makeWidgetApplication);
}

void ensureWidgetApplication()
{
    useWidgetApplication();
    display::ensureGuiApplication();
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        throw std::runtime_error("cannot show windows: the process runs a Qt application "
                                 "without widgets");
    }
}

bool displayAvailable()
{
    const QString platform = QGuiApplication::platformName();
    return !platform.isEmpty() && platform != "offscreen" && platform != "minimal";
}

void runModalWindow(QWidget& window, const std::string& form)
{
    ensureWidgetApplication();
    auto* script = dialogScript();
    if (script == nullptr && displayAvailable()) {
        window.setWindowModality(Qt::ApplicationModal);
        if (auto* dialog = qobject_cast<QDialog*>(&window)) {
            dialog->exec();
            return;
        }
        window.show();
        QEventLoop loop;
        QPointer<QWidget> guard(&window);
        while (guard && window.isVisible()) {
            loop.processEvents(QEventLoop::WaitForMoreEvents);
        }
        return;
    }
    runScripted(window, form, script);
}

} // namespace brevant::platform::ui::qt
