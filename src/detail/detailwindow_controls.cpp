// Address, name, squelch, mute and KOB, and the key handling of the boxes.
#include "detail/detailwindow.h"

#include "core/context.h"
#include "core/options.h"
#include "detail/settingstab.h"
#include "receivers/receivername.h"

#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>

#include <cmath>
#include <utility>

namespace zun {

namespace {
// The character code a key press delivers to the boxes' key handlers, or -1
// for keys that only move or edit (arrows, Delete, function keys) and stay
// Qt's. Escape and Control or Alt combinations are keys like any other to a
// box that filters what it takes; paste is left to Qt, and the text it brings
// is filtered as it arrives.
int keyAsciiOf(const QKeyEvent *key)
{
    const int k = key->key();
    if (k == Qt::Key_Return || k == Qt::Key_Enter)
        return 13;
    if (k == Qt::Key_Backspace)
        return 8;
    if (k == Qt::Key_Escape)
        return 27;
    if (key->matches(QKeySequence::Paste))
        return -1;
    const auto modifiers = key->modifiers();
    if (modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
        if (k >= Qt::Key_Escape) // a key without a character: a modifier alone, an arrow
            return -1;
        // Control and a letter give the letter's control code; every other
        // combination gives DEL, which no box takes either.
        if ((modifiers & Qt::ControlModifier) && k >= Qt::Key_A && k <= Qt::Key_Z)
            return k - Qt::Key_A + 1;
        return 127;
    }
    const QString text = key->text();
    if (text.size() != 1 || text.at(0).unicode() < 32 || text.at(0).unicode() == 127)
        return -1;
    return text.at(0).unicode();
}

bool nameKeyAllowed(int k)
{
    return k == 8 || k == 13 || nameCharAllowed(k);
}
} // namespace

bool DetailWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (squelchMouse(watched, event))
        return QWidget::eventFilter(watched, event);
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    int keyAscii = keyAsciiOf(static_cast<QKeyEvent *>(event));
    if (keyAscii < 0)
        return QWidget::eventFilter(watched, event);

    SettingsTab &s = *m_settings;
    if (watched == s.nameEdit) {
        const bool enter = keyAscii == 13;
        nameKeyPressed(keyAscii);
        return keyAscii == 0 || enter;
    }
    if (keyAscii != 13)
        return QWidget::eventFilter(watched, event);
    if (watched == s.addressEdit) {
        addressKeyPressed(keyAscii);
        return true;
    }
    if (watched == s.frequencyEdit) {
        frequencyKeyPressed(keyAscii);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void DetailWindow::addressKeyPressed(int keyAscii)
{
    SettingsTab &s = *m_settings;
    double typed = 0;
    if (keyAscii != 13 || !isNumericText(s.addressEdit->text(), &typed))
        return;
    const double rounded = std::nearbyint(typed);
    if (!(rounded >= 1 && rounded <= 64)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Valid Address is 1 to 64"));
        return;
    }
    const int address = static_cast<int>(rounded);
    if (address == record().address)
        return;
    if (m_ctx.bus.addressAnswers(address)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Address ") + QString::number(address) +
                                       QStringLiteral(" is already used by another receiver !"));
        return;
    }
    if (m_ctx.platform.dialogs.message(QStringLiteral("Change Address ?"), MessageButtons::YesNo) !=
        MessageAnswer::Yes) {
        s.addressEdit->setText(QString::number(record().address));
        return;
    }
    m_ctx.detail.changeAddress(address);
    s.addressEdit->setText(QString::number(address));
    showPanelName();
}

void DetailWindow::nameKeyPressed(int &keyAscii)
{
    if (!nameKeyAllowed(keyAscii)) {
        keyAscii = 0;
        m_ctx.platform.dialogs.message(QStringLiteral("Please enter 0-9 or A-Z or +-*/"));
        return;
    }
    if (keyAscii != 13)
        return;
    m_settings->nameEdit->setText(m_ctx.detail.setName(m_settings->nameEdit->text()));
    showPanelName();
}

void DetailWindow::nameEdited(const QString &text)
{
    // Keys were filtered one by one already; this catches text that arrives
    // whole (paste, drag and drop, an input method). Only the inserted part
    // is looked at, so a name as the receiver reported it stays untouched.
    const QString &before = m_nameBefore;
    qsizetype head = 0;
    while (head < before.size() && head < text.size() && before[head] == text[head])
        ++head;
    qsizetype tail = 0;
    while (tail < before.size() - head && tail < text.size() - head &&
           before[before.size() - 1 - tail] == text[text.size() - 1 - tail])
        ++tail;
    const QString inserted = text.mid(head, text.size() - head - tail);
    QString kept;
    for (QChar c : inserted)
        if (nameCharAllowed(c.unicode()))
            kept += c;
    if (kept.size() == inserted.size())
        return;
    QLineEdit *box = m_settings->nameEdit;
    box->setText(text.left(head) + kept + text.right(tail));
    box->setCursorPosition(static_cast<int>(head + kept.size()));
    m_ctx.platform.dialogs.message(QStringLiteral("Please enter 0-9 or A-Z or +-*/"));
}

bool DetailWindow::squelchMouse(QObject *watched, QEvent *event)
{
    SettingsTab &s = *m_settings;
    if (watched != s.squelchDownButton && watched != s.squelchUpButton)
        return false;
    const auto type = event->type();
    // A quick second press arrives as a double-click; it is a press all the same.
    const bool press = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
    if ((press || type == QEvent::MouseButtonRelease) &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        if (press) {
            m_squelchArmed = true;
        } else {
            m_squelchArmed = false;
            // The release ends the hold wherever the pointer is, so the value held is always sent.
            squelchRelease();
        }
    }
    return true;
}

void DetailWindow::squelchDownHeld()
{
    if (std::exchange(m_squelchArmed, false))
        holdSquelch(-1);
}

void DetailWindow::squelchUpHeld()
{
    if (std::exchange(m_squelchArmed, false))
        holdSquelch(+1);
}

void DetailWindow::holdSquelch(int direction)
{
    // One gesture is one hold, however often the button reports a press.
    if (m_squelchHeld)
        return;
    // The window may close while the UI runs; a hold whose release this
    // window will never see then ends unsent.
    const QPointer<DetailWindow> alive(this);
    const auto stillHeld = [&alive] { return alive && alive->m_squelchHeld; };
    m_squelchHeld = true;
    // One step now, then after 400 ms one every 20 ms until released or at
    // the end of 1..99.
    m_ctx.detail.stepSquelch(direction);
    m_ctx.bus.processEvents();
    if (stillHeld()) {
        m_ctx.bus.link().delay(400);
        m_ctx.bus.processEvents();
    }
    while (stillHeld() && canStepSquelch(direction)) {
        m_ctx.detail.stepSquelch(direction);
        m_ctx.bus.link().delay(20);
        m_ctx.bus.processEvents();
    }
}

bool DetailWindow::canStepSquelch(int direction) const
{
    const int squelch = record().squelch;
    return direction < 0 ? squelch > 1 : squelch < 99;
}

void DetailWindow::squelchRelease()
{
    // The release sends the value once.
    if (!std::exchange(m_squelchHeld, false))
        return;
    m_ctx.detail.sendSquelch();
}

void DetailWindow::toggleMute()
{
    const bool muted = !record().mute;
    showMuteImage(muted);
    m_host.setPanelMute(m_index, muted);
    m_ctx.bus.toggleMute(m_index);
}

void DetailWindow::setKobLock(bool locked)
{
    m_tabs->setEnabled(!locked);
    m_frameA->setEnabled(!locked);
    m_frameB->setEnabled(!locked);
    m_cmdExit->setEnabled(!locked);
}

void DetailWindow::kobPressed()
{
    if (m_ctx.detail.kobActive()) {
        // A second press is how the user gives up waiting for the receiver.
        m_ctx.platform.dialogs.message(
            QStringLiteral("This receiver will stay offline until KOB function is manually terminated !"));
        m_ctx.detail.stopKob();
        return;
    }
    // The window cannot close while the function runs, so it outlives this.
    m_ctx.detail.runKob();
}

void DetailWindow::showKobPhase(KobPhase phase)
{
    switch (phase) {
    case KobPhase::Started:
        setKobLock(true);
        m_captionBeforeKob = windowTitle();
        break;
    case KobPhase::Performing:
        setWindowTitle(QStringLiteral("Performing KOB function now ..."));
        break;
    case KobPhase::Waiting:
        // An empty title would show the application's name instead.
        setWindowTitle(QStringLiteral(" "));
        break;
    case KobPhase::Complete:
        setWindowTitle(QStringLiteral("Complete!"));
        break;
    case KobPhase::UserAborted:
        setWindowTitle(QStringLiteral("User Aborted!"));
        break;
    case KobPhase::Ended:
        setWindowTitle(m_captionBeforeKob);
        setKobLock(false);
        break;
    }
}

} // namespace zun
