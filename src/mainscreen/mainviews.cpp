// The main screen's views: display modes, the two screens, hiding, the full
// view, the settings file, and the detail window it opens.
#include "core/context.h"
#include "mainscreen/displaymode.h"
#include "mainscreen/mainwindow.h"
#include "mainscreen/panelgrid.h"
#include "mainscreen/rcvpanel.h"
#include "platform/regularfile.h"
#include "receivers/settingsfile.h"

#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>

namespace zun {

namespace {
constexpr qint64 kLargestSettingsFile = 256 * 1024;
}

void MainWindow::buildPopupMenu()
{
    m_popup = new QMenu(this);
    m_popup->setObjectName(QStringLiteral("mnuPopupMenu"));
    const struct
    {
        const char *name;
        const char *caption;
        int mode;
    } items[] = {
        {"mnu_PM_GCH", "Show Group and Channel", ModeGroupChannel},
        {"mnu_PM_Frq", "Show Frequency", ModeFrequency},
        {"mnu_PM_SQ", "Show Squelch", ModeSquelch},
        {"mnu_PM_Rname", "Show Receiver's Address & Name", ModeAddressName},
        {"mnu_PM_Addr", "Show Receiver's Address", ModeAddress},
        {"mnu_PM_VOL", "Show Volume", ModeVolume},
    };
    for (const auto &item : items) {
        // The captions carry no mnemonics: an ampersand in them is a character.
        QString caption = QString::fromLatin1(item.caption);
        caption.replace(QLatin1Char('&'), QStringLiteral("&&"));
        QAction *action = m_popup->addAction(caption);
        action->setObjectName(QString::fromLatin1(item.name));
        const int mode = item.mode;
        // The volume item has no action of its own.
        if (mode != ModeVolume)
            connect(action, &QAction::triggered, this, [this, mode] { showDisplayMode(mode); });
    }
}

void MainWindow::showDisplayMode(int mode)
{
    if (mode == ModeVolume)
        return;
    m_displayMode = mode;
    m_ctx.bus.showDisplayMode(mode);
    const int shown = std::min(m_ctx.bus.table().foundCount(), m_ctx.bus.table().size());
    for (int i = 0; i < shown; ++i)
        refreshNameCaption(i);
}

void MainWindow::refreshPanels()
{
    showDisplayMode(m_displayMode);
}

void MainWindow::setPanelMute(int index, bool muted)
{
    if (RcvPanel *p = m_grid->panel(index))
        p->setMutePicture(muted);
}

void MainWindow::setPanelNameCaption(int index, const QString &caption)
{
    if (RcvPanel *p = m_grid->panel(index))
        p->setNameText(caption);
}

QString MainWindow::panelBatteryText(int index) const
{
    const RcvPanel *p = m_grid->panel(index);
    return p ? p->batteryLabel()->text() : QString();
}

void MainWindow::showPage(int page)
{
    QFont bold = m_cmdPage1->font();
    bold.setBold(true);
    QFont normal = bold;
    normal.setBold(false);
    m_cmdPage1->setFont(page == 0 ? bold : normal);
    m_cmdPage2->setFont(page == 1 ? bold : normal);
    m_grid->setPage(page);
}

void MainWindow::hideChosen()
{
    // The action toggles its own check mark.
    m_grid->setHideUnused(m_mnuHide->isChecked(), m_ctx.bus.table().foundCount());
}

void MainWindow::fullViewChosen()
{
    if (m_grid->fullView()) {
        m_mnuFullView->setChecked(false);
        m_grid->setFullView(false);
        m_cmdPage1->setEnabled(true);
        m_cmdPage2->setEnabled(true);
        return;
    }
    if (m_ctx.platform.desktop.screenWidth() < 1024) {
        m_mnuFullView->setChecked(false);
        m_ctx.platform.dialogs.message(
            QStringLiteral("Your VGA monitor need at least 1024 x 768 resolution with small fonts!"));
        return;
    }
    m_mnuFullView->setChecked(true);
    m_grid->setFullView(true);
    // All 64 panels are in view: there is nothing to page.
    m_cmdPage1->setEnabled(false);
    m_cmdPage2->setEnabled(false);
}

void MainWindow::saveChosen()
{
    const QString path = m_ctx.platform.dialogs.saveFileName(kSettingsFilter);
    if (path.isEmpty())
        return;
    const QString error = saveSettingsFile(path, formatSettings(m_ctx.bus.table().found()));
    if (!error.isEmpty())
        m_ctx.platform.dialogs.message(
            QStringLiteral("The settings could not be saved to %1: %2").arg(path, error));
}

void MainWindow::loadChosen()
{
    const QString path = m_ctx.platform.dialogs.openFileName(kSettingsFilter);
    if (!path.isEmpty())
        loadSettingsFile(path);
}

void MainWindow::offerSettingsFile(const QString &path)
{
    if (m_ctx.bus.table().foundCount() == 0) {
        m_ctx.platform.dialogs.message(
            QStringLiteral("No receivers were found, so the settings in %1 were not loaded.").arg(path));
        return;
    }
    if (m_ctx.platform.dialogs.message(QStringLiteral("Load the receiver settings from %1?").arg(path),
                                       MessageButtons::YesNo) == MessageAnswer::Yes)
        loadSettingsFile(path);
}

void MainWindow::loadSettingsFile(const QString &path)
{
    QFile file;
    if (const QString error = openRegularFile(file, path); !error.isEmpty()) {
        m_ctx.platform.dialogs.message(
            QStringLiteral("The file %1 could not be opened: %2").arg(path, error));
        return;
    }
    if (file.size() > kLargestSettingsFile) {
        m_ctx.platform.dialogs.message(
            QStringLiteral(
                "The file %1 is far too large to be a receiver settings file; nothing was changed.")
                .arg(path));
        return;
    }
    const SettingsParse parsed = parseSettings(file.read(kLargestSettingsFile));
    if (!parsed.error.isEmpty()) {
        m_ctx.platform.dialogs.message(parsed.error + QStringLiteral(" Nothing was changed."));
        return;
    }
    for (const SettingsLine &line : parsed.lines) {
        const auto index = m_ctx.bus.programReceiver(line);
        if (!index)
            continue;
        refreshNameCaption(*index);
        m_grid->panel(*index)->setMutePicture(m_ctx.bus.table().at(*index).mute);
    }
}

void MainWindow::moreClicked(int index)
{
    if (!validIndex(index) || m_ctx.detail.kobActive())
        return;
    if (m_more)
        m_more->close();
    if (m_more) // the old window refused to close
        return;
    if (!m_ctx.makeDetailWindow)
        return;
    m_ctx.detail.open(index);
    m_more = m_ctx.makeDetailWindow(m_ctx, *this);
    m_more->load();
    m_more->show();
    m_more->raise();
    m_ctx.bus.setWorkMode(WorkMode::DetailRead);
}

} // namespace zun
