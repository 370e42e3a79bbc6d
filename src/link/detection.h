#pragma once

#include <QString>

#include <optional>

namespace zun {

struct Context;
struct ReceiverRecord;

// What detection shows while it scans; the progress view implements it.
class DetectionProgress
{
public:
    virtual ~DetectionProgress() = default;
    virtual void begin(const QString &message) = 0;
    virtual void setProgress(int address) = 0; // 1..64
    virtual bool skipRequested() const = 0;
    virtual void end() = 0;
};

// The status fields of an identification reply to "%"+address+"M", taken by
// position: text as it stands, hex fields through HexToNum, fields missing
// from a short reply empty or 0. Nothing only when the reply is not "$" + address.
std::optional<ReceiverRecord> parseIdentification(const QString &reply, int address);

// Stores the status fields of an identification reply into a record and sets
// it online; false (record untouched) when the reply is not "$" + address.
bool applyIdentification(ReceiverRecord &record, const QString &reply, int address);

// Scans addresses 1..64 on the current port and refills the receiver table
// from record 0 up. True when at least one receiver answered.
bool CheckReceivers(Context &ctx, DetectionProgress &progress);

} // namespace zun
