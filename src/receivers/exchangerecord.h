#pragma once

#include <QChar>
#include <QMetaType>
#include <QtGlobal>

namespace zun {

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

Q_DECLARE_METATYPE(zun::ExchangeRecord)
