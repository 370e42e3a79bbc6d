#include "rftools/dropcounterpanel.h"

#include "rftools/plotparts.h"
#include "rftools/rfnaming.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

namespace zun {

namespace {
QPushButton *pictureButton(const QString &name, const QString &speakable, QStyle::StandardPixmap icon,
                           QWidget *parent)
{
    auto *button = new QPushButton(parent);
    tagRfControl(button, name);
    button->setIcon(parent->style()->standardIcon(icon));
    button->setAccessibleName(speakable);
    button->setToolTip(speakable);
    return button;
}
} // namespace

DropCounterPanel::DropCounterPanel(QWidget *parent) : QWidget(parent)
{
    m_dropA = makeReadout(QStringLiteral("DropA"), QStringLiteral("0"), QStringLiteral("000000"), this);
    m_dropB = makeReadout(QStringLiteral("DropB"), QStringLiteral("0"), QStringLiteral("000000"), this);
    m_run =
        pictureButton(QStringLiteral("DropRun"), QStringLiteral("Count drops"), QStyle::SP_MediaPlay, this);
    m_pause = pictureButton(QStringLiteral("DropPause"), QStringLiteral("Pause counting"),
                            QStyle::SP_MediaPause, this);
    m_run->setCheckable(true);
    m_clear = new QPushButton(QStringLiteral("Clear"), this);
    tagRfControl(m_clear, QStringLiteral("DropClear"));

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(new QLabel(QStringLiteral("Signal Drop A"), this), 0, 0);
    grid->addWidget(m_dropA, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("Signal Drop B"), this), 1, 0);
    grid->addWidget(m_dropB, 1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_run);
    buttons->addWidget(m_pause);
    buttons->addWidget(m_clear);
    grid->addLayout(buttons, 2, 0, 1, 2);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void DropCounterPanel::showCounting(bool on)
{
    m_run->setChecked(on);
}

} // namespace zun
