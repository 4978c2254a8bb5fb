#include "platform/ui/qt/QtProgressDialog.h"

#include <QCoreApplication>

namespace brevant::platform::ui::qt {

namespace {
// The operation holds the GUI thread, so the window repaints only when asked; user input
// stays queued, because the library is not reentrant.
void repaint()
{
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}
} // namespace

QtProgressDialog::QtProgressDialog(QWidget* parent)
    : m_dialog(std::make_unique<QProgressDialog>(parent)), m_alive(m_dialog.get())
{
    m_dialog->setCancelButton(nullptr);
    m_dialog->setAutoClose(false);
    m_dialog->setAutoReset(false);
    m_dialog->setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    // Stops Qt's own timer that would show the window before show() is called.
    m_dialog->reset();
}

QtProgressDialog::~QtProgressDialog()
{
    if (!m_alive) {
        // Deleted with its parent window; nothing left to delete.
        static_cast<void>(m_dialog.release());
    }
}

void QtProgressDialog::show()
{
    m_state.visible = true;
    if (m_alive) {
        m_dialog->show();
        showBar();
    }
}

void QtProgressDialog::setTitle(const std::string& title)
{
    m_state.title = title;
    if (m_alive) {
        m_dialog->setWindowTitle(QString::fromStdString(title));
        repaint();
    }
}

void QtProgressDialog::setMessage(const std::string& message)
{
    m_state.message = message;
    if (m_alive) {
        m_dialog->setLabelText(QString::fromStdString(message));
        repaint();
    }
}

void QtProgressDialog::setStepCount(std::int32_t steps)
{
    m_state.setStepCount(steps);
    showBar();
}

void QtProgressDialog::setPosition(std::int32_t position)
{
    m_state.setPosition(position);
    showBar();
}

void QtProgressDialog::advance()
{
    m_state.advance();
    showBar();
}

void QtProgressDialog::close()
{
    m_state.visible = false;
    if (m_alive) {
        m_dialog->hide();
        // Stops the timer a hidden QProgressDialog uses to show itself when a value arrives.
        m_dialog->reset();
    }
}

void QtProgressDialog::showBar()
{
    // A hidden QProgressDialog shows itself some time after it gets a value, so the bar is
    // set only while the window is meant to be seen.
    if (!m_alive || !m_state.visible) {
        return;
    }
    // A range of 0 to 0 is Qt's busy bar.
    m_dialog->setRange(0, m_state.steps);
    m_dialog->setValue(m_state.position);
    repaint();
}

} // namespace brevant::platform::ui::qt
