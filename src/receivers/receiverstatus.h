#pragma once

#include <QMetaType>
#include <QString>
#include <QtGlobal>

namespace zun {

// What a listener outside the windows (status feeds, alarms, logs, the
// bus-health view) learns of one receiver. Plain values, copied freely; the
// receiver layer fills one after every event that changes what it knows.
struct ReceiverStatus
{
    int address = 0;           // bus address 1..64
    QString name;              // as the receiver reports it, trailing blanks removed
    double frequencyMHz = 0.0; // the frequency it is tuned to
    int squelch = 0;           // 0..99
    int rfA = 0;               // display level 0..99 of antenna A
    int rfB = 0;               // display level 0..99 of antenna B
    double rfADbm = 0.0;       // the same levels in dBm
    double rfBDbm = 0.0;
    int audio = 0;           // audio meter 0..99 (99 = the clip mark and above)
    bool audioClip = false;  // the meter's red box is lit
    int batteryPercent = -1; // 100, 80, 40, 10, 0 ("OFF"); -1 while not yet known
    bool mute = false;
    bool online = false;
};

// One exchange on the line, reported after it ends, whether it succeeded or not.
struct ExchangeRecord
{
    enum class Result {
        Ok,        // a reply that starts with "$" and the address
        NoReply,   // nothing arrived before the time-out
        Garbled,   // something arrived, but not "$" and the address
        Broadcast, // address 00: nobody answers by design
    };
    int address = 0; // 0 for a broadcast
    QChar command;   // the command letter, 'N' for a level read
    Result result = Result::Ok;
    int attempts = 1;           // 1 + retries used
    qint64 startMicros = 0;     // on the program's clock
    qint64 roundTripMicros = 0; // from the first write to the end of the exchange
    int commandChars = 0;       // characters written per attempt, carriage return included
    int replyChars = 0;         // characters read on the last attempt
    quint64 lineNoise = 0;      // characters the line has dropped so far, in all
};

} // namespace zun

Q_DECLARE_METATYPE(zun::ReceiverStatus)
Q_DECLARE_METATYPE(zun::ExchangeRecord)
