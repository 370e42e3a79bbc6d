#include "mainscreen/searchprogresswindow.h"

#include "mainscreen/centre.h"
#include "mainscreen/clicklabel.h"
#include "mainscreen/colors.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QShowEvent>

#include <algorithm>

namespace zun {

// Picture1: a plain box filled in blue from the left edge.
class ProgressBox : public QWidget
{
public:
    explicit ProgressBox(QWidget *parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setFixedHeight(fontMetrics().height() + 6);
    }

    void setAddress(int address)
    {
        m_address = std::clamp(address, 0, SearchProgressWindow::kAddressCount);
        repaint();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), bgrColor(bgr::White));
        const int filled = width() * m_address / SearchProgressWindow::kAddressCount;
        p.fillRect(QRect(0, 0, filled, height()), QColor(0, 0, 255));
    }

private:
    int m_address = 0;
};

SearchProgressWindow::SearchProgressWindow(QWidget *parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setObjectName(QStringLiteral("frmCheckNet"));
    setAccessibleDescription(QStringLiteral("frmCheckNet"));
    setWindowTitle(QStringLiteral("Zunoria"));

    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("lblMessage"));
    m_message->setMinimumWidth(fontMetrics().averageCharWidth() * 46);

    m_percent = new QLabel(QStringLiteral("0%"), this);
    m_percent->setObjectName(QStringLiteral("lblPercent"));
    m_percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_percent->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("100%")) + 4);

    // The sunken frame sits around the picture, not on it, so the bar can
    // use the picture's whole width and height.
    auto *barFrame = new QFrame(this);
    barFrame->setFrameShape(QFrame::Panel);
    barFrame->setFrameShadow(QFrame::Sunken);
    m_bar = new ProgressBox(barFrame);
    m_bar->setObjectName(QStringLiteral("Picture1"));
    m_bar->setAccessibleDescription(QStringLiteral("Picture1"));
    auto *barLayout = new QHBoxLayout(barFrame);
    barLayout->setContentsMargins(1, 1, 1, 1);
    barLayout->addWidget(m_bar);

    m_skip = new ClickLabel(this);
    m_skip->setObjectName(QStringLiteral("Label3"));
    m_skip->setAccessibleDescription(QStringLiteral("Label3"));
    m_skip->setText(QStringLiteral("SKIP"));
    m_skip->setAlignment(Qt::AlignCenter);
    m_skip->setFrameShape(QFrame::Box);
    m_skip->setMargin(3);
    m_skip->setCursor(Qt::PointingHandCursor);
    m_skip->setToolTip(tr("Stop searching and keep the receivers found so far"));
    QFont bold = m_skip->font();
    bold.setBold(true);
    m_skip->setFont(bold);
    connect(m_skip, &ClickLabel::clicked, this, [this](Qt::MouseButton button) {
        if (button == Qt::LeftButton)
            m_skip->setEnabled(false);
    });

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setHorizontalSpacing(10);
    layout->setVerticalSpacing(10);
    layout->addWidget(m_message, 0, 0, 1, 3);
    layout->addWidget(barFrame, 1, 0);
    layout->addWidget(m_percent, 1, 1);
    layout->addWidget(m_skip, 1, 2);
    layout->setColumnStretch(0, 1);
}

void SearchProgressWindow::setMessage(const QString &text)
{
    m_message->setText(text);
}

void SearchProgressWindow::setProgress(int address)
{
    address = std::clamp(address, 0, kAddressCount);
    m_percent->setText(QString::number(address * 100 / kAddressCount) + QLatin1Char('%'));
    m_percent->repaint();
    m_bar->setAddress(address);
}

QWidget *SearchProgressWindow::progressBox() const
{
    return m_bar;
}

bool SearchProgressWindow::skipRequested() const
{
    // Asked of the label itself, so a disabled parent window does not read as
    // a click on "SKIP".
    return !m_skip->isEnabledTo(this);
}

void SearchProgressWindow::reset()
{
    m_skip->setEnabled(true);
    m_percent->setText(QStringLiteral("0%"));
    m_bar->setAddress(0);
}

void SearchProgressWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return; // restored from minimised: the search is still the same one
    reset();
    adjustSize();
    centreOnScreen(this);
}

} // namespace zun
