#pragma once

#include <QString>

namespace zun {

struct Context;

// Where a polling pass delivers what it read; the main screen implements it.
class PanelSink
{
public:
    virtual ~PanelSink() = default;
    virtual void UpdateRcvPanel(int index, const QString &reply) = 0;
    // The receiver missed its level read and is no longer polled.
    virtual void showOffline(int index) = 0;
};

// One pass over every online receiver: all reads first, then all panels.
// Returns false when there was nobody to ask, so the caller can sleep.
bool ReadAllAD(Context &ctx, PanelSink &panels);

// True when some receiver answers on this address.
bool AddrCheck(Context &ctx, int address);

// The two text-field reads of one record.
void ReadRcvA(Context &ctx, int index);
void ReadRcvB(Context &ctx, int index);

} // namespace zun
