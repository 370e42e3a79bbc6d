// Address, name, squelch, mute and KOB, and the key handling of the boxes.
#include "detail/frmmore.h"

#include "core/context.h"
#include "core/options.h"
#include "detail/detailhost.h"
#include "detail/settingstab.h"
#include "link/hex.h"
#include "mainscreen/polling.h"

#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QTabWidget>

#include <cmath>
#include <utility>

namespace zun {

namespace {
// The character code a key press delivers to the boxes' key handlers, or -1
// for keys that only edit or move (arrows, Delete, shortcuts) and stay Qt's.
int keyAsciiOf(const QKeyEvent *key)
{
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
        return 13;
    if (key->key() == Qt::Key_Backspace)
        return 8;
    if (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return -1;
    const QString text = key->text();
    if (text.size() != 1 || text.at(0).unicode() < 32 || text.at(0).unicode() == 127)
        return -1;
    return text.at(0).unicode();
}

bool nameCharAllowed(int k)
{
    return k == 32 || (k >= 42 && k <= 57) || (k >= 65 && k <= 90);
}

bool nameKeyAllowed(int k)
{
    return k == 8 || k == 13 || nameCharAllowed(k);
}
} // namespace

bool FrmMore::eventFilter(QObject *watched, QEvent *event)
{
    if (squelchMouse(watched, event))
        return QWidget::eventFilter(watched, event);
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    int keyAscii = keyAsciiOf(static_cast<QKeyEvent *>(event));
    if (keyAscii < 0)
        return QWidget::eventFilter(watched, event);

    SettingsTab &s = *m_settings;
    if (watched == s.txtRName) {
        const bool enter = keyAscii == 13;
        txtRNameKeyPress(keyAscii);
        return keyAscii == 0 || enter;
    }
    if (keyAscii != 13)
        return QWidget::eventFilter(watched, event);
    if (watched == s.txtAddr) {
        txtAddrKeyPress(keyAscii);
        return true;
    }
    if (watched == s.txtFreq) {
        txtFreqKeyPress(keyAscii);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void FrmMore::txtAddrKeyPress(int keyAscii)
{
    SettingsTab &s = *m_settings;
    double typed = 0;
    if (keyAscii != 13 || !isNumericText(s.txtAddr->text(), &typed))
        return;
    const double rounded = std::nearbyint(typed);
    if (!(rounded >= 1 && rounded <= 64)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Valid Address is 1 to 64"));
        return;
    }
    const int address = static_cast<int>(rounded);
    const QString newText = NumToHex(address, 2);
    if (newText == m_addressText)
        return;
    if (AddrCheck(m_ctx, address)) {
        m_ctx.platform.dialogs.message(QStringLiteral("Address ") + QString::number(address) +
                                       QStringLiteral(" is already used by another receiver !"));
        return;
    }
    if (m_ctx.platform.dialogs.message(QStringLiteral("Change Address ?"), MessageButtons::YesNo) !=
        MessageAnswer::Yes) {
        s.txtAddr->setText(QString::number(record().address));
        return;
    }
    send(QLatin1Char('#'), QLatin1Char('L') + newText, 4, 250);
    record().address = address;
    m_addressText = newText;
    s.txtAddr->setText(QString::number(address));
    showPanelName();
}

void FrmMore::txtRNameKeyPress(int &keyAscii)
{
    if (!nameKeyAllowed(keyAscii)) {
        keyAscii = 0;
        m_ctx.platform.dialogs.message(QStringLiteral("Please enter 0-9 or A-Z or +-*/"));
        return;
    }
    if (keyAscii != 13)
        return;
    const QString name = (m_settings->txtRName->text().toUpper() + QString(6, QLatin1Char(' '))).left(6);
    record().name = name;
    m_settings->txtRName->setText(name);
    send(QLatin1Char('#'), QLatin1Char('C') + name, 4, 250);
    showPanelName();
}

void FrmMore::txtRNameEdited(const QString &text)
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
    QLineEdit *box = m_settings->txtRName;
    box->setText(text.left(head) + kept + text.right(tail));
    box->setCursorPosition(static_cast<int>(head + kept.size()));
    m_ctx.platform.dialogs.message(QStringLiteral("Please enter 0-9 or A-Z or +-*/"));
}

bool FrmMore::squelchMouse(QObject *watched, QEvent *event)
{
    SettingsTab &s = *m_settings;
    if (watched != s.cmdSQdec && watched != s.cmdSQinc)
        return false;
    const auto type = event->type();
    if ((type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease) &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        if (type == QEvent::MouseButtonPress) {
            m_squelchArmed = true;
        } else {
            m_squelchArmed = false;
            // The release ends the hold wherever the pointer is, so the value held is always sent.
            if (m_squelchHeld)
                squelchRelease();
        }
    }
    return true;
}

void FrmMore::cmdSQdecMouseDown()
{
    if (std::exchange(m_squelchArmed, false))
        holdSquelch(-1);
}

void FrmMore::cmdSQincMouseDown()
{
    if (std::exchange(m_squelchArmed, false))
        holdSquelch(+1);
}

void FrmMore::holdSquelch(int direction)
{
    // The squelch runs 1..99; the button repeats while it is held.
    const auto canStep = [&] { return direction < 0 ? record().squelch > 1 : record().squelch < 99; };
    m_squelchHeld = true;
    if (canStep())
        record().squelch += direction;
    ShowSquelch();
    if (!doEvents())
        return;
    if (m_squelchHeld) {
        m_ctx.link.Delay(400);
        if (!doEvents())
            return;
    }
    while (m_squelchHeld && canStep()) {
        record().squelch += direction;
        ShowSquelch();
        m_ctx.link.Delay(20);
        if (!doEvents())
            return;
    }
}

void FrmMore::squelchRelease()
{
    m_squelchHeld = false;
    send(QLatin1Char('#'), QLatin1Char('F') + NumToHex(record().squelch, 2), 4, 250);
}

void FrmMore::MuteClick()
{
    ReceiverRecord &r = record();
    r.mute = !r.mute;
    showMuteImage(r.mute);
    m_host.setPanelMute(m_index, r.mute);
    send(QLatin1Char('#'), r.mute ? QStringLiteral("B1") : QStringLiteral("B0"), 4, 250);
}

void FrmMore::setKobLock(bool locked)
{
    m_tabs->setEnabled(!locked);
    m_frameA->setEnabled(!locked);
    m_frameB->setEnabled(!locked);
    m_cmdExit->setEnabled(!locked);
}

void FrmMore::cmdKobClick()
{
    AppState &state = m_ctx.state;
    if (state.KobActive) {
        // A second press is how the user gives up waiting for the receiver.
        m_ctx.platform.dialogs.message(
            QStringLiteral("This receiver will stay offline until KOB function is manually terminated !"));
        state.KobActive = false;
        return;
    }
    setKobLock(true);
    state.KobActive = true;
    send(QLatin1Char('%'), QStringLiteral("O"), 0, 100);
    const QString caption = windowTitle();

    QString outcome;
    for (;;) {
        setWindowTitle(QStringLiteral("Performing KOB function now ..."));
        m_ctx.link.Delay(300);
        // An empty title would show the application's name instead.
        setWindowTitle(QStringLiteral(" "));
        // The window cannot close while KobActive is set, so it outlives this.
        m_ctx.platform.desktop.processEvents();
        if (!state.KobActive) {
            outcome = QStringLiteral("User Aborted!");
            break;
        }
        if (send(QLatin1Char('#'), QStringLiteral("A1"), 4, 200)) {
            outcome = state.KobActive ? QStringLiteral("Complete!") : QStringLiteral("User Aborted!");
            break;
        }
    }
    setWindowTitle(outcome);
    m_ctx.link.Delay(1500);
    setWindowTitle(caption);
    setKobLock(false);
    state.KobActive = false;
}

} // namespace zun
