#include "detail/settingstab.h"

#include "detail/detailmeters.h"

#include "platform/widgetname.h"
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace zun {

namespace {
QLineEdit *field(const QString &name, int characters, bool readOnly, QWidget *parent)
{
    auto *edit = named(new QLineEdit(parent), name);
    edit->setReadOnly(readOnly);
    edit->setAlignment(Qt::AlignCenter);
    edit->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const int width = edit->fontMetrics().horizontalAdvance(QString(characters, QLatin1Char('0'))) + 18;
    edit->setFixedWidth(width);
    if (readOnly) {
        // Read-only boxes look like read-outs, not like fields to type into.
        QPalette palette = edit->palette();
        palette.setColor(QPalette::Base, palette.color(QPalette::Window).lighter(104));
        edit->setPalette(palette);
        edit->setFocusPolicy(Qt::NoFocus);
    }
    return edit;
}

QToolButton *arrow(const QString &name, Qt::ArrowType type, const QString &speakable, QWidget *parent)
{
    auto *button = named(new QToolButton(parent), name);
    button->setArrowType(type);
    button->setAccessibleName(speakable);
    button->setToolTip(speakable);
    button->setFixedSize(26, 24);
    return button;
}

QLabel *caption(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return label;
}

QLabel *unit(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QLabel *valueLabel(const QString &name, QWidget *parent)
{
    auto *label = named(new QLabel(parent), name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("-100.0 dBm")) + 4);
    return label;
}
} // namespace

SettingsTab::SettingsTab(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("tabSettings"));

    // Receiver identity.
    auto *identity = new QGroupBox(QStringLiteral("Receiver"), this);
    identity->setObjectName(QStringLiteral("frameReceiver"));
    txtAddr = field(QStringLiteral("txtAddr"), 4, false, identity);
    txtAddr->setMaxLength(3);
    txtAddr->setToolTip(QStringLiteral("Bus address 1 to 64; Enter changes it"));
    txtRName = field(QStringLiteral("txtRName"), 8, false, identity);
    // No length limit: a pasted or dropped text is filtered whole, and Enter keeps the first 6.
    txtRName->setToolTip(QStringLiteral("Characters 0-9, A-Z, +-*/; Enter sends the first 6"));
    auto *identityGrid = new QGridLayout(identity);
    identityGrid->addWidget(caption(QStringLiteral("Address"), identity), 0, 0);
    identityGrid->addWidget(txtAddr, 0, 1, Qt::AlignLeft);
    identityGrid->addWidget(caption(QStringLiteral("Name"), identity), 0, 2);
    identityGrid->addWidget(txtRName, 0, 3, Qt::AlignLeft);
    identityGrid->setColumnStretch(4, 1);

    // Tuning: presets, frequency and the band.
    auto *tuning = new QGroupBox(QStringLiteral("Tuning"), this);
    tuning->setObjectName(QStringLiteral("frameTuning"));
    txtGroup = field(QStringLiteral("txtGroup"), 4, true, tuning);
    txtChannel = field(QStringLiteral("txtChannel"), 4, true, tuning);
    txtFreq = field(QStringLiteral("txtFreq"), 9, false, tuning);
    QFont big = txtFreq->font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    big.setBold(true);
    txtFreq->setFont(big);
    txtFreq->setFixedWidth(txtFreq->fontMetrics().horizontalAdvance(QStringLiteral("0000.000")) + 18);
    // One column of equal boxes keeps the step arrows of all three rows aligned.
    txtGroup->setFixedWidth(txtFreq->width());
    txtChannel->setFixedWidth(txtFreq->width());
    txtFreq->setToolTip(QStringLiteral("Type a frequency in MHz and press Enter"));
    txtBandStart = field(QStringLiteral("txtBandStart"), 8, true, tuning);
    txtBandStop = field(QStringLiteral("txtBandStop"), 8, true, tuning);
    TV = field(QStringLiteral("TV"), 4, true, tuning);
    TV->setToolTip(
        QStringLiteral("TV channel of the last frequency shown, for the region chosen in the Option menu"));
    cmdGroupDown = arrow(QStringLiteral("cmdGroupDown"), Qt::LeftArrow, QStringLiteral("Group down"), tuning);
    cmdGroupUp = arrow(QStringLiteral("cmdGroupUp"), Qt::RightArrow, QStringLiteral("Group up"), tuning);
    cmdChanDown = arrow(QStringLiteral("cmdChanDown"), Qt::LeftArrow, QStringLiteral("Channel down"), tuning);
    cmdChanUp = arrow(QStringLiteral("cmdChanUp"), Qt::RightArrow, QStringLiteral("Channel up"), tuning);
    cmdFreqDown =
        arrow(QStringLiteral("cmdFreqDown"), Qt::LeftArrow, QStringLiteral("Frequency down"), tuning);
    cmdFreqUp = arrow(QStringLiteral("cmdFreqUp"), Qt::RightArrow, QStringLiteral("Frequency up"), tuning);
    cmdFreqDown->setFixedHeight(txtFreq->sizeHint().height());
    cmdFreqUp->setFixedHeight(txtFreq->sizeHint().height());

    auto *tuningGrid = new QGridLayout(tuning);
    tuningGrid->setHorizontalSpacing(6);
    auto addStepper = [&](int row, const QString &text, QToolButton *down, QLineEdit *box, QToolButton *up,
                          QWidget *trailing) {
        tuningGrid->addWidget(caption(text, tuning), row, 0);
        tuningGrid->addWidget(down, row, 1);
        tuningGrid->addWidget(box, row, 2, Qt::AlignHCenter);
        tuningGrid->addWidget(up, row, 3);
        if (trailing)
            tuningGrid->addWidget(trailing, row, 4);
    };
    addStepper(0, QStringLiteral("Group"), cmdGroupDown, txtGroup, cmdGroupUp, nullptr);
    addStepper(1, QStringLiteral("Channel"), cmdChanDown, txtChannel, cmdChanUp, nullptr);
    addStepper(2, QStringLiteral("Frequency"), cmdFreqDown, txtFreq, cmdFreqUp,
               unit(QStringLiteral("MHz"), tuning));

    auto *tvRow = new QHBoxLayout;
    tvRow->addWidget(TV);
    tvRow->addStretch(1);
    tuningGrid->addWidget(caption(QStringLiteral("TV channel"), tuning), 3, 0);
    tuningGrid->addLayout(tvRow, 3, 1, 1, 3);

    auto *bandRow = new QHBoxLayout;
    bandRow->setSpacing(4);
    bandRow->addWidget(txtBandStart);
    bandRow->addWidget(new QLabel(QStringLiteral("–"), tuning));
    bandRow->addWidget(txtBandStop);
    bandRow->addStretch(1);
    tuningGrid->addWidget(caption(QStringLiteral("Band"), tuning), 4, 0);
    tuningGrid->addLayout(bandRow, 4, 1, 1, 3);
    tuningGrid->addWidget(unit(QStringLiteral("MHz"), tuning), 4, 4);
    tuningGrid->setColumnStretch(5, 1);
    tuningGrid->setRowMinimumHeight(2, txtFreq->sizeHint().height() + 6);

    // Live levels.
    auto *levels = new QGroupBox(QStringLiteral("Levels"), this);
    levels->setObjectName(QStringLiteral("frameLevels"));
    PB_RFA = new DetailMeter(QStringLiteral("PB_RFA"), 99, levels);
    PB_RFB = new DetailMeter(QStringLiteral("PB_RFB"), 99, levels);
    PB_Dev = new DetailMeter(QStringLiteral("PB_Dev"), 129, levels);
    PB_Dev->setWarningFrom(116);
    PB_RFA->setToolTip(QStringLiteral("RF level, antenna A"));
    PB_RFB->setToolTip(QStringLiteral("RF level, antenna B"));
    PB_Dev->setToolTip(QStringLiteral("Audio deviation; the tinted end is overmodulation"));
    lbRFAValue = valueLabel(QStringLiteral("lbRFAValue"), levels);
    lbRFBValue = valueLabel(QStringLiteral("lbRFBValue"), levels);
    BatV = named(new QLabel(levels), QStringLiteral("BatV"));
    BatV->setAlignment(Qt::AlignCenter);
    BatV->setFrameShape(QFrame::Panel);
    BatV->setFrameShadow(QFrame::Sunken);
    BatV->setAutoFillBackground(true);
    BatV->setFixedWidth(BatV->fontMetrics().horizontalAdvance(QStringLiteral("100%")) + 28);
    auto *levelGrid = new QGridLayout(levels);
    levelGrid->addWidget(caption(QStringLiteral("RF A"), levels), 0, 0);
    levelGrid->addWidget(PB_RFA, 0, 1);
    levelGrid->addWidget(lbRFAValue, 0, 2);
    levelGrid->addWidget(caption(QStringLiteral("RF B"), levels), 1, 0);
    levelGrid->addWidget(PB_RFB, 1, 1);
    levelGrid->addWidget(lbRFBValue, 1, 2);
    levelGrid->addWidget(caption(QStringLiteral("Deviation"), levels), 2, 0);
    levelGrid->addWidget(PB_Dev, 2, 1);
    levelGrid->addWidget(caption(QStringLiteral("Battery"), levels), 3, 0);
    levelGrid->addWidget(BatV, 3, 1, Qt::AlignLeft);
    levelGrid->setColumnStretch(1, 1);

    // Squelch and muting.
    auto *audio = new QGroupBox(QStringLiteral("Squelch and audio"), this);
    audio->setObjectName(QStringLiteral("frameAudio"));
    cmdSQdec = named(new QPushButton(QStringLiteral("−"), audio), QStringLiteral("cmdSQdec"));
    cmdSQinc = named(new QPushButton(QStringLiteral("+"), audio), QStringLiteral("cmdSQinc"));
    cmdSQdec->setAccessibleName(QStringLiteral("Squelch down"));
    cmdSQinc->setAccessibleName(QStringLiteral("Squelch up"));
    cmdSQdec->setToolTip(QStringLiteral("Lower the squelch; hold to repeat"));
    cmdSQinc->setToolTip(QStringLiteral("Raise the squelch; hold to repeat"));
    // Mouse only: a hold runs from a mouse press to its release, and a key
    // press on them would do nothing.
    for (QPushButton *b : {cmdSQdec, cmdSQinc}) {
        b->setFixedSize(30, 26);
        b->setFocusPolicy(Qt::NoFocus);
    }
    PB_SQ = new SquelchBar(audio);
    PB_SQ->setToolTip(QStringLiteral("Squelch threshold on the RF level scale"));
    lbSQValue = named(new QLabel(audio), QStringLiteral("lbSQValue"));
    lbSQValue->setMinimumWidth(lbSQValue->fontMetrics().horizontalAdvance(QStringLiteral("SQ 99")) + 6);
    lbSQValue->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Mute = named(new QPushButton(audio), QStringLiteral("Mute"));
    Mute->setAccessibleName(QStringLiteral("Mute"));
    Mute->setToolTip(QStringLiteral("Mute or unmute the receiver's audio output"));
    Mute->setIconSize(QSize(24, 24));
    Mute->setFixedSize(40, 34);
    lbMuteState = named(new QLabel(audio), QStringLiteral("lbMuteState"));
    auto *audioGrid = new QGridLayout(audio);
    audioGrid->addWidget(caption(QStringLiteral("Squelch"), audio), 0, 0);
    audioGrid->addWidget(cmdSQdec, 0, 1);
    audioGrid->addWidget(PB_SQ, 0, 2);
    audioGrid->addWidget(cmdSQinc, 0, 3);
    audioGrid->addWidget(lbSQValue, 0, 4);
    audioGrid->addWidget(caption(QStringLiteral("Output"), audio), 1, 0);
    auto *muteRow = new QHBoxLayout;
    muteRow->addWidget(Mute);
    muteRow->addWidget(lbMuteState);
    muteRow->addStretch(1);
    audioGrid->addLayout(muteRow, 1, 1, 1, 4);
    audioGrid->setColumnStretch(2, 1);

    auto *left = new QVBoxLayout;
    left->addWidget(identity);
    left->addWidget(tuning);
    left->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addWidget(levels);
    right->addWidget(audio);
    extraArea = new QVBoxLayout;
    right->addLayout(extraArea);
    right->addStretch(1);

    auto *columns = new QHBoxLayout(this);
    columns->addLayout(left, 0);
    columns->addLayout(right, 1);
}

} // namespace zun
