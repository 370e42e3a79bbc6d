#include "mainscreen/splashwindow.h"

#include "mainscreen/centre.h"
#include "mainscreen/imageresources.h"

#include <QLabel>
#include <QVBoxLayout>

namespace zun {

SplashWindow::SplashWindow(QWidget *parent) : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("frmSplash"));
    setAccessibleDescription(QStringLiteral("frmSplash"));
    setWindowTitle(QStringLiteral("Zunoria"));

    auto *picture = new QLabel(this);
    picture->setObjectName(QStringLiteral("imgLogo"));
    picture->setPixmap(namedImage(QStringLiteral("logo")));
    picture->setAccessibleName(QStringLiteral("Zunoria"));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(picture);
}

void SplashWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    adjustSize();
    centreOnScreen(this);
}

} // namespace zun
