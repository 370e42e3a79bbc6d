#include "mainscreen/rcvpanel.h"

#include "mainscreen/clicklabel.h"
#include "mainscreen/colors.h"
#include "mainscreen/imageresources.h"
#include "mainscreen/imagesign.h"
#include "mainscreen/levelmeter.h"
#include "mainscreen/panelreadout.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace zun {

namespace {

QFont scaledFont(const QFont &base, qreal factor)
{
    QFont f = base;
    if (base.pointSizeF() > 0)
        f.setPointSizeF(std::max(5.0, base.pointSizeF() * factor));
    else
        f.setPixelSize(std::max(6, int(std::lround(base.pixelSize() * factor))));
    return f;
}

QLabel *makeCaption(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignCenter);
    label->setForegroundRole(QPalette::Dark);
    return label;
}

} // namespace

RcvPanel::RcvPanel(int index, QWidget *parent) : QWidget(parent), m_index(index)
{
    name(this, QStringLiteral("RcvPanel"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);

    m_name = new ClickLabel(this);
    name(m_name, QStringLiteral("lbRname"));
    m_name->setAlignment(Qt::AlignCenter);
    m_name->setShrinkToFit(true);
    m_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_name->setCursor(Qt::PointingHandCursor);

    m_kob = new QLabel(this);
    name(m_kob, QStringLiteral("lbKOB"));
    m_kob->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_kob->setForegroundRole(QPalette::Dark);

    m_rfA = new LevelMeter(LevelMeter::Kind::Rf, this);
    name(m_rfA, QStringLiteral("PB_RFA"));
    m_rfA->setToolTip(tr("RF level, antenna A"));
    m_rfB = new LevelMeter(LevelMeter::Kind::Rf, this);
    name(m_rfB, QStringLiteral("PB_RFB"));
    m_rfB->setToolTip(tr("RF level, antenna B"));
    m_audio = new LevelMeter(LevelMeter::Kind::Audio, this);
    name(m_audio, QStringLiteral("PB_AF"));
    m_audio->setToolTip(tr("Audio level"));

    m_rfSign = new ImageSign(this);
    name(m_rfSign, QStringLiteral("RF_SIGN"));
    m_rfSign->setAccessibleName(tr("RF"));
    m_rfSign->setToolTip(tr("Green: a transmitter is heard above the squelch"));
    m_rfSign->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_rfCaption = makeCaption(QStringLiteral("RF"), this);

    m_pilot = new ImageSign(this);
    name(m_pilot, QStringLiteral("PILOT_SIGN"));
    m_pilot->setAccessibleName(tr("Pilot"));
    m_pilot->setToolTip(tr("Click to run the receiver's KOB function"));
    m_pilot->setCursor(Qt::PointingHandCursor);

    m_batSign = new ImageSign(this);
    name(m_batSign, QStringLiteral("BAT_SIGN"));
    m_batSign->setAccessibleName(tr("Battery"));
    m_batSign->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_batV = new QLabel(this);
    name(m_batV, QStringLiteral("BatV"));
    m_batV->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_batV->setFrameShape(QFrame::Panel);
    m_batV->setFrameShadow(QFrame::Sunken);
    m_batV->setMargin(1);
    m_batV->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_batV->setToolTip(tr("Transmitter battery"));

    m_mute = new QToolButton(this);
    name(m_mute, QStringLiteral("Mute"));
    m_mute->setAccessibleName(tr("Mute"));
    m_mute->setToolTip(tr("Mute or unmute the receiver's output"));
    m_mute->setToolButtonStyle(Qt::ToolButtonIconOnly);
    m_mute->setFocusPolicy(Qt::TabFocus);

    m_more = new QToolButton(this);
    name(m_more, QStringLiteral("More"));
    m_more->setText(tr("More"));
    m_more->setToolTip(tr("Open the receiver's detail window"));
    m_more->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_more->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_more->setFocusPolicy(Qt::TabFocus);

    // Layout: name on top, three meters, signs, battery, buttons at the foot.
    m_layout = new QVBoxLayout(this);
    m_layout->addWidget(m_name);

    m_meterGrid = new QGridLayout;
    m_meterGrid->setContentsMargins(0, 0, 0, 0);
    m_meterGrid->setVerticalSpacing(1);
    m_meterGrid->setColumnStretch(0, 1);
    m_meterGrid->setColumnStretch(5, 1);
    m_meterGrid->addWidget(m_rfA, 0, 1, Qt::AlignHCenter);
    m_meterGrid->addWidget(m_rfB, 0, 2, Qt::AlignHCenter);
    m_meterGrid->addWidget(m_audio, 0, 4, Qt::AlignHCenter);
    m_meterCaptions = {makeCaption(QStringLiteral("A"), this), makeCaption(QStringLiteral("B"), this),
                       makeCaption(QStringLiteral("AF"), this)};
    m_meterGrid->addWidget(m_meterCaptions[0], 1, 1);
    m_meterGrid->addWidget(m_meterCaptions[1], 1, 2);
    m_meterGrid->addWidget(m_meterCaptions[2], 1, 4);
    m_meterGrid->setRowStretch(0, 1);
    m_layout->addLayout(m_meterGrid, 1);

    auto *signs = new QHBoxLayout;
    signs->setContentsMargins(0, 0, 0, 0);
    signs->setSpacing(2);
    signs->addWidget(m_rfCaption);
    signs->addWidget(m_rfSign);
    signs->addStretch(1);
    signs->addWidget(m_pilot);
    signs->addWidget(m_kob);
    m_layout->addLayout(signs);

    auto *battery = new QHBoxLayout;
    battery->setContentsMargins(0, 0, 0, 0);
    battery->setSpacing(2);
    battery->addWidget(m_batSign);
    battery->addWidget(m_batV, 1);
    m_layout->addLayout(battery);

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(2);
    buttons->addWidget(m_mute);
    buttons->addWidget(m_more, 1);
    m_layout->addLayout(buttons);

    connect(m_name, &ClickLabel::clicked, this, [this](Qt::MouseButton button, QPoint globalPos) {
        if (button == Qt::LeftButton)
            emit nameClicked(m_index);
        else if (button == Qt::RightButton)
            emit contextMenuRequested(m_index, globalPos);
    });
    connect(m_pilot, &ImageSign::clicked, this, [this](Qt::MouseButton button, QPoint) {
        if (button == Qt::LeftButton)
            emit pilotClicked(m_index);
    });
    connect(m_mute, &QToolButton::clicked, this, [this] { emit muteClicked(m_index); });
    connect(m_more, &QToolButton::clicked, this, [this] { emit moreClicked(m_index); });

    applyFonts();
    disableBlank();
}

void RcvPanel::name(QWidget *widget, const QString &objectName)
{
    widget->setObjectName(objectName);
    widget->setProperty("index", m_index);
    widget->setAccessibleDescription(objectName + QLatin1Char('(') + QString::number(m_index) +
                                     QLatin1Char(')'));
}

void RcvPanel::showReadout(const PanelReadout &readout)
{
    m_rfA->setRfLevel(readout.rfA, bgrColor(readout.rfAColor));
    m_rfB->setRfLevel(readout.rfB, bgrColor(readout.rfBColor));
    m_audio->setAudio(readout.audioX, readout.audioClip);
    m_rfSign->setImageName(readout.rfSignImage);
    if (readout.batteryShown) {
        if (m_batV->text() != readout.batteryCaption)
            m_batV->setText(readout.batteryCaption);
        m_batSign->setImageName(readout.batteryImage);
    }
}

void RcvPanel::enableLive(bool muted)
{
    setEnabled(true);
    setNameColors(bgrColor(bgr::White), bgrColor(bgr::Teal));
    m_name->setVisible(true);
    m_rfA->setLive(true);
    m_rfB->setLive(true);
    m_audio->setLive(true);
    setBatteryLive(true);
    m_batV->setText(QStringLiteral("OFF"));
    m_more->setEnabled(true);
    m_mute->setEnabled(true);
    setMutePicture(muted);
    setPilotPicture(QStringLiteral("GreenBall"));
    update();
}

void RcvPanel::disableBlank()
{
    setEnabled(false);
    m_more->setEnabled(false);
    m_mute->setEnabled(false);
    clearNameColors();
    m_rfA->setLive(false);
    m_rfB->setLive(false);
    m_audio->setLive(false);
    setBatteryLive(false);
    m_rfSign->setImageName(QString());
    m_pilot->setImageName(QString());
    m_batSign->setImageName(QString());
    m_name->clear();
    m_batV->clear();
    update();
}

void RcvPanel::setOffline()
{
    setNameColors(bgrColor(bgr::Red), bgrColor(bgr::White));
    m_mute->setEnabled(false);
    m_more->setEnabled(false);
}

void RcvPanel::setNameText(const QString &text)
{
    if (m_name->text() != text)
        m_name->setText(text);
}

QString RcvPanel::nameText() const
{
    return m_name->text();
}

void RcvPanel::setMutePicture(bool muted)
{
    const QString image = muted ? QStringLiteral("SpeakerOFF") : QStringLiteral("SpeakerON");
    if (m_mute->property("imageName").toString() == image)
        return;
    m_mute->setProperty("imageName", image);
    m_mute->setIcon(namedIcon(image));
    m_mute->setToolTip(muted ? tr("Muted: click to unmute") : tr("Click to mute"));
}

void RcvPanel::setPilotPicture(const QString &imageName)
{
    m_pilot->setImageName(imageName);
}

void RcvPanel::setKobCaption(const QString &caption)
{
    m_kob->setText(caption);
}

QColor RcvPanel::nameTextColor() const
{
    return m_name->palette().color(QPalette::WindowText);
}

void RcvPanel::blinkPhase(int phase)
{
    const QRgb current = nameTextColor().rgb();
    const QColor red = bgrColor(bgr::Red);
    const QColor face = buttonFaceColor();
    QPalette pal = m_name->palette();
    if (phase == 0 && current == red.rgb())
        pal.setColor(QPalette::WindowText, face);
    else if (phase == 1 && current == face.rgb())
        pal.setColor(QPalette::WindowText, red);
    else
        return;
    m_name->setPalette(pal);
}

namespace {
// A translucent wash over the name label that lets the name show through.
class AlarmGlow : public QWidget
{
public:
    explicit AlarmGlow(QWidget *label) : QWidget(label)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setObjectName(QStringLiteral("alarmGlow"));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), QColor(255, 60, 0, 170));
    }
};
} // namespace

void RcvPanel::setAlarmLit(bool lit)
{
    if (!m_alarmGlow) {
        if (!lit)
            return;
        m_alarmGlow = new AlarmGlow(m_name);
    }
    m_alarmGlow->setGeometry(m_name->rect());
    m_alarmGlow->setVisible(lit);
}

bool RcvPanel::alarmLit() const
{
    return m_alarmGlow && !m_alarmGlow->isHidden();
}

void RcvPanel::setNameColors(const QColor &text, const QColor &background)
{
    QPalette pal = m_name->palette();
    for (auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        pal.setColor(group, QPalette::WindowText, text);
        pal.setColor(group, QPalette::Window, background);
    }
    m_name->setPalette(pal);
    m_name->setAutoFillBackground(true);
}

void RcvPanel::clearNameColors()
{
    // An empty palette inherits the panel's colours again.
    m_name->setPalette(QPalette());
    m_name->setAutoFillBackground(false);
}

void RcvPanel::setBatteryLive(bool live)
{
    m_batV->setFrameShape(live ? QFrame::Panel : QFrame::NoFrame);
    if (live) {
        QPalette pal = m_batV->palette();
        pal.setColor(QPalette::Window, bgrColor(bgr::LightYellow));
        pal.setColor(QPalette::WindowText, Qt::black);
        m_batV->setPalette(pal);
        m_batV->setAutoFillBackground(true);
    } else {
        m_batV->setPalette(QPalette());
        m_batV->setAutoFillBackground(false);
    }
}

void RcvPanel::setScale(qreal scale)
{
    scale = std::clamp(scale, 0.6, 3.0);
    if (std::abs(scale - m_scale) < 0.02)
        return;
    m_scale = scale;
    applyFonts();
}

void RcvPanel::setCompact(bool compact)
{
    if (compact == m_compact)
        return;
    m_compact = compact;
    applyFonts();
}

void RcvPanel::applyFonts()
{
    const QFont base = font();
    QFont nameFont = scaledFont(base, m_scale);
    nameFont.setBold(true);
    // The battery text imitates the old "Small Fonts": small but crisp.
    const QFont small = scaledFont(base, 0.8 * m_scale);
    const QFont tiny = scaledFont(base, 0.7 * m_scale);

    m_name->setFont(nameFont);
    const int nameHeight = QFontMetrics(nameFont).height() + int(std::lround(4 * m_scale));
    m_name->setFixedHeight(nameHeight);

    for (QWidget *w :
         {static_cast<QWidget *>(m_batV), static_cast<QWidget *>(m_more), static_cast<QWidget *>(m_kob)})
        w->setFont(small);
    for (QLabel *caption : std::as_const(m_meterCaptions)) {
        caption->setFont(tiny);
        caption->setVisible(!m_compact);
    }
    m_rfCaption->setFont(tiny);
    for (LevelMeter *meter : {m_rfA, m_rfB, m_audio})
        meter->setFont(small);

    const int em = QFontMetrics(small).height();
    const int side = std::max(10, int(std::lround(em * 1.1)));
    for (ImageSign *sign : {m_rfSign, m_pilot, m_batSign})
        sign->setSide(side);
    m_batV->setFixedHeight(QFontMetrics(small).height() + 4);
    const int buttonHeight = QFontMetrics(small).height() + int(std::lround(7 * m_scale));
    m_more->setFixedHeight(buttonHeight);
    m_mute->setFixedSize(int(std::lround(buttonHeight * 1.35)), buttonHeight);
    const int iconSide = buttonHeight - int(std::lround(3 * m_scale));
    m_mute->setIconSize(QSize(iconSide, iconSide));

    const int gap = int(std::lround((m_compact ? 2 : 4) * m_scale));
    m_layout->setContentsMargins(gap, gap, gap, gap + 1);
    m_layout->setSpacing(m_compact ? std::max(2, gap) : gap + 1);
    m_meterGrid->setHorizontalSpacing(std::max(2, gap));
    m_meterGrid->setColumnMinimumWidth(3, std::max(2, gap));
    fitMeters();
    updateGeometry();
}

void RcvPanel::fitMeters()
{
    // The bars take a fixed share of the strip so wide strips do not look
    // empty, but never get thinner than is readable.
    const int em = QFontMetrics(m_rfA->font()).height();
    const int barWidth = std::clamp(int(width() * 0.15), std::max(6, em * 3 / 4), em * 3);
    for (LevelMeter *meter : {m_rfA, m_rfB, m_audio})
        meter->setFixedWidth(barWidth);
}

void RcvPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitMeters();
}

QSize RcvPanel::sizeHint() const
{
    const int em = fontMetrics().height();
    return QSize(em * 6, em * (m_compact ? 14 : 22));
}

QSize RcvPanel::minimumSizeHint() const
{
    const QSize layoutMin = m_layout->minimumSize();
    return QSize(std::min(layoutMin.width(), fontMetrics().height() * 4), layoutMin.height());
}

void RcvPanel::paintEvent(QPaintEvent *)
{
    // A console channel strip: a slightly darker rounded plate with a fine
    // edge, flatter when no receiver is behind it.
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QPalette &pal = palette();
    const bool live = isEnabled();
    const QColor plate = pal.color(QPalette::Window).darker(live ? 109 : 103);
    const QColor edge = pal.color(QPalette::Mid);
    const QRectF r = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = 4 * m_scale;
    p.setPen(QPen(live ? edge : edge.lighter(115), 1));
    p.setBrush(plate);
    p.drawRoundedRect(r, radius, radius);
}

void RcvPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        applyFonts();
    else if (event->type() == QEvent::EnabledChange)
        update();
    QWidget::changeEvent(event);
}

} // namespace zun
