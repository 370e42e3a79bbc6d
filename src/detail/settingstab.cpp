#include "detail/settingstab.h"

#include "detail/detailmeters.h"

#include "windowing/widgetname.h"
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
    addressEdit = field(QStringLiteral("txtAddr"), 4, false, identity);
    addressEdit->setMaxLength(3);
    addressEdit->setToolTip(QStringLiteral("Bus address 1 to 64; Enter changes it"));
    nameEdit = field(QStringLiteral("txtRName"), 8, false, identity);
    // No length limit: a pasted or dropped text is filtered whole, and Enter keeps the first 6.
    nameEdit->setToolTip(QStringLiteral("Characters 0-9, A-Z, +-*/; Enter sends the first 6"));
    auto *identityGrid = new QGridLayout(identity);
    identityGrid->addWidget(caption(QStringLiteral("Address"), identity), 0, 0);
    identityGrid->addWidget(addressEdit, 0, 1, Qt::AlignLeft);
    identityGrid->addWidget(caption(QStringLiteral("Name"), identity), 0, 2);
    identityGrid->addWidget(nameEdit, 0, 3, Qt::AlignLeft);
    identityGrid->setColumnStretch(4, 1);

    // Tuning: presets, frequency and the band.
    auto *tuning = new QGroupBox(QStringLiteral("Tuning"), this);
    tuning->setObjectName(QStringLiteral("frameTuning"));
    groupEdit = field(QStringLiteral("txtGroup"), 4, true, tuning);
    channelEdit = field(QStringLiteral("txtChannel"), 4, true, tuning);
    frequencyEdit = field(QStringLiteral("txtFreq"), 9, false, tuning);
    QFont big = frequencyEdit->font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    big.setBold(true);
    frequencyEdit->setFont(big);
    frequencyEdit->setFixedWidth(frequencyEdit->fontMetrics().horizontalAdvance(QStringLiteral("0000.000")) +
                                 18);
    // One column of equal boxes keeps the step arrows of all three rows aligned.
    groupEdit->setFixedWidth(frequencyEdit->width());
    channelEdit->setFixedWidth(frequencyEdit->width());
    frequencyEdit->setToolTip(QStringLiteral("Type a frequency in MHz and press Enter"));
    bandStartEdit = field(QStringLiteral("txtBandStart"), 8, true, tuning);
    bandStopEdit = field(QStringLiteral("txtBandStop"), 8, true, tuning);
    tvChannelEdit = field(QStringLiteral("TV"), 4, true, tuning);
    tvChannelEdit->setToolTip(
        QStringLiteral("TV channel of the last frequency shown, for the region chosen in the Option menu"));
    groupDownButton =
        arrow(QStringLiteral("cmdGroupDown"), Qt::LeftArrow, QStringLiteral("Group down"), tuning);
    groupUpButton = arrow(QStringLiteral("cmdGroupUp"), Qt::RightArrow, QStringLiteral("Group up"), tuning);
    channelDownButton =
        arrow(QStringLiteral("cmdChanDown"), Qt::LeftArrow, QStringLiteral("Channel down"), tuning);
    channelUpButton =
        arrow(QStringLiteral("cmdChanUp"), Qt::RightArrow, QStringLiteral("Channel up"), tuning);
    frequencyDownButton =
        arrow(QStringLiteral("cmdFreqDown"), Qt::LeftArrow, QStringLiteral("Frequency down"), tuning);
    frequencyUpButton =
        arrow(QStringLiteral("cmdFreqUp"), Qt::RightArrow, QStringLiteral("Frequency up"), tuning);
    frequencyDownButton->setFixedHeight(frequencyEdit->sizeHint().height());
    frequencyUpButton->setFixedHeight(frequencyEdit->sizeHint().height());

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
    addStepper(0, QStringLiteral("Group"), groupDownButton, groupEdit, groupUpButton, nullptr);
    addStepper(1, QStringLiteral("Channel"), channelDownButton, channelEdit, channelUpButton, nullptr);
    addStepper(2, QStringLiteral("Frequency"), frequencyDownButton, frequencyEdit, frequencyUpButton,
               unit(QStringLiteral("MHz"), tuning));

    auto *tvRow = new QHBoxLayout;
    tvRow->addWidget(tvChannelEdit);
    tvRow->addStretch(1);
    tuningGrid->addWidget(caption(QStringLiteral("TV channel"), tuning), 3, 0);
    tuningGrid->addLayout(tvRow, 3, 1, 1, 3);

    auto *bandRow = new QHBoxLayout;
    bandRow->setSpacing(4);
    bandRow->addWidget(bandStartEdit);
    bandRow->addWidget(new QLabel(QStringLiteral("–"), tuning));
    bandRow->addWidget(bandStopEdit);
    bandRow->addStretch(1);
    tuningGrid->addWidget(caption(QStringLiteral("Band"), tuning), 4, 0);
    tuningGrid->addLayout(bandRow, 4, 1, 1, 3);
    tuningGrid->addWidget(unit(QStringLiteral("MHz"), tuning), 4, 4);
    tuningGrid->setColumnStretch(5, 1);
    tuningGrid->setRowMinimumHeight(2, frequencyEdit->sizeHint().height() + 6);

    // Live levels.
    auto *levels = new QGroupBox(QStringLiteral("Levels"), this);
    levels->setObjectName(QStringLiteral("frameLevels"));
    rfAMeter = new DetailMeter(QStringLiteral("PB_RFA"), 99, levels);
    rfBMeter = new DetailMeter(QStringLiteral("PB_RFB"), 99, levels);
    deviationMeter = new DetailMeter(QStringLiteral("PB_Dev"), 129, levels);
    deviationMeter->setWarningFrom(116);
    rfAMeter->setToolTip(QStringLiteral("RF level, antenna A"));
    rfBMeter->setToolTip(QStringLiteral("RF level, antenna B"));
    deviationMeter->setToolTip(QStringLiteral("Audio deviation; the tinted end is overmodulation"));
    rfAValueLabel = valueLabel(QStringLiteral("lbRFAValue"), levels);
    rfBValueLabel = valueLabel(QStringLiteral("lbRFBValue"), levels);
    batteryLabel = named(new QLabel(levels), QStringLiteral("BatV"));
    batteryLabel->setAlignment(Qt::AlignCenter);
    batteryLabel->setFrameShape(QFrame::Panel);
    batteryLabel->setFrameShadow(QFrame::Sunken);
    batteryLabel->setAutoFillBackground(true);
    batteryLabel->setFixedWidth(batteryLabel->fontMetrics().horizontalAdvance(QStringLiteral("100%")) + 28);
    auto *levelGrid = new QGridLayout(levels);
    levelGrid->addWidget(caption(QStringLiteral("RF A"), levels), 0, 0);
    levelGrid->addWidget(rfAMeter, 0, 1);
    levelGrid->addWidget(rfAValueLabel, 0, 2);
    levelGrid->addWidget(caption(QStringLiteral("RF B"), levels), 1, 0);
    levelGrid->addWidget(rfBMeter, 1, 1);
    levelGrid->addWidget(rfBValueLabel, 1, 2);
    levelGrid->addWidget(caption(QStringLiteral("Deviation"), levels), 2, 0);
    levelGrid->addWidget(deviationMeter, 2, 1);
    levelGrid->addWidget(caption(QStringLiteral("Battery"), levels), 3, 0);
    levelGrid->addWidget(batteryLabel, 3, 1, Qt::AlignLeft);
    levelGrid->setColumnStretch(1, 1);

    // Squelch and muting.
    auto *audio = new QGroupBox(QStringLiteral("Squelch and audio"), this);
    audio->setObjectName(QStringLiteral("frameAudio"));
    squelchDownButton = named(new QPushButton(QStringLiteral("−"), audio), QStringLiteral("cmdSQdec"));
    squelchUpButton = named(new QPushButton(QStringLiteral("+"), audio), QStringLiteral("cmdSQinc"));
    squelchDownButton->setAccessibleName(QStringLiteral("Squelch down"));
    squelchUpButton->setAccessibleName(QStringLiteral("Squelch up"));
    squelchDownButton->setToolTip(QStringLiteral("Lower the squelch; hold to repeat"));
    squelchUpButton->setToolTip(QStringLiteral("Raise the squelch; hold to repeat"));
    // Mouse only: a hold runs from a mouse press to its release, and a key
    // press on them would do nothing.
    for (QPushButton *b : {squelchDownButton, squelchUpButton}) {
        b->setFixedSize(30, 26);
        b->setFocusPolicy(Qt::NoFocus);
    }
    squelchBar = new SquelchBar(audio);
    squelchBar->setToolTip(QStringLiteral("Squelch threshold on the RF level scale"));
    squelchValueLabel = named(new QLabel(audio), QStringLiteral("lbSQValue"));
    squelchValueLabel->setMinimumWidth(
        squelchValueLabel->fontMetrics().horizontalAdvance(QStringLiteral("SQ 99")) + 6);
    squelchValueLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    muteButton = named(new QPushButton(audio), QStringLiteral("Mute"));
    muteButton->setAccessibleName(QStringLiteral("Mute"));
    muteButton->setToolTip(QStringLiteral("Mute or unmute the receiver's audio output"));
    muteButton->setIconSize(QSize(24, 24));
    muteButton->setFixedSize(40, 34);
    muteStateLabel = named(new QLabel(audio), QStringLiteral("lbMuteState"));
    auto *audioGrid = new QGridLayout(audio);
    audioGrid->addWidget(caption(QStringLiteral("Squelch"), audio), 0, 0);
    audioGrid->addWidget(squelchDownButton, 0, 1);
    audioGrid->addWidget(squelchBar, 0, 2);
    audioGrid->addWidget(squelchUpButton, 0, 3);
    audioGrid->addWidget(squelchValueLabel, 0, 4);
    audioGrid->addWidget(caption(QStringLiteral("Output"), audio), 1, 0);
    auto *muteRow = new QHBoxLayout;
    muteRow->addWidget(muteButton);
    muteRow->addWidget(muteStateLabel);
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
