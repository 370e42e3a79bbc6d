#include "mainscreen/aboutwindow.h"

#include "mainscreen/centre.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/imageresources.h"

#include <QCoreApplication>
#include <QEvent>
#include <QHBoxLayout>

namespace zun {

AboutWindow::AboutWindow(QWidget *parent) : QWidget(parent, Qt::Dialog)
{
    setObjectName(QStringLiteral("frmAbout"));
    setAccessibleDescription(QStringLiteral("frmAbout"));
    setWindowTitle(tr("About Zunoria"));
    setWindowIcon(namedIcon(QStringLiteral("icon")));

    m_icon = new ClickLabel(this);
    m_icon->setObjectName(QStringLiteral("imgIcon"));
    m_icon->setAccessibleName(QStringLiteral("Zunoria"));
    const int side = fontMetrics().height() * 5;
    QPixmap icon = namedImage(QStringLiteral("icon"));
    if (!icon.isNull()) {
        const qreal dpr = devicePixelRatioF();
        icon = icon.scaled(QSize(side, side) * dpr, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        icon.setDevicePixelRatio(dpr);
    }
    m_icon->setPixmap(icon);
    m_icon->setAlignment(Qt::AlignTop);

    const QString version = QCoreApplication::applicationVersion();
    QString text = QStringLiteral("<p style='font-size:x-large'><b>Zunoria</b></p>");
    if (!version.isEmpty())
        text +=
            QStringLiteral("<p>") + tr("Version %1").arg(version.toHtmlEscaped()) + QStringLiteral("</p>");
    text += QStringLiteral("<p>") +
            tr("Watches and adjusts up to 64 wireless audio receivers on one serial line: "
               "RF and audio levels, battery, mute, names, tuning, spectrum scan and "
               "RF recording.") +
            QStringLiteral("</p><p style='color:gray'>") + tr("Click to close.") + QStringLiteral("</p>");
    m_text = new ClickLabel(this);
    m_text->setObjectName(QStringLiteral("lblAbout"));
    m_text->setTextFormat(Qt::RichText);
    m_text->setWordWrap(true);
    m_text->setText(text);
    m_text->setMinimumWidth(fontMetrics().averageCharWidth() * 40);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(16, 16, 16, 16);
    layout->setSpacing(16);
    layout->addWidget(m_icon);
    layout->addWidget(m_text, 1);

    connect(m_icon, &ClickLabel::clicked, this, [this] { close(); });
    connect(m_text, &ClickLabel::clicked, this, [this] { close(); });
}

void AboutWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_wasActive = false;
    centreOnScreen(this);
    activateWindow();
}

void AboutWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::ActivationChange || !isVisible())
        return;
    // Only a real loss of focus counts, not the moment before it was first
    // activated.
    if (isActiveWindow())
        m_wasActive = true;
    else if (m_wasActive)
        close();
}

} // namespace zun
