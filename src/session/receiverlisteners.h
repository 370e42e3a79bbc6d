#pragma once

#include "alarms/alarmengine.h"
#include "showlog/showlog.h"

namespace zun {

// Connects the alarm engine and the show log to a source with the receiver
// layer's signals (the receiver bus, or a stand-in in tests). Direct
// connections: each slot only compares and buffers.
template <typename Source> void connectMonitoring(const Source *source, AlarmEngine *alarms, ShowLog *log)
{
    QObject::connect(source, &Source::receiverFound, alarms, &AlarmEngine::onReceiverFound);
    QObject::connect(source, &Source::levelsRead, alarms, &AlarmEngine::onLevelsRead);
    QObject::connect(source, &Source::wentOffline, alarms, &AlarmEngine::onWentOffline);
    QObject::connect(source, &Source::cameBack, alarms, &AlarmEngine::onCameBack);

    QObject::connect(source, &Source::receiverFound, log, &ShowLog::onReceiverFound);
    QObject::connect(source, &Source::receiverChanged, log, &ShowLog::onReceiverChanged);
    QObject::connect(source, &Source::levelsRead, log, &ShowLog::onLevelsRead);
    QObject::connect(source, &Source::wentOffline, log, &ShowLog::onWentOffline);
    QObject::connect(source, &Source::cameBack, log, &ShowLog::onCameBack);
    QObject::connect(source, &Source::scanPointRead, log, &ShowLog::onScanPointRead);
    QObject::connect(source, &Source::recorderSampled, log, &ShowLog::onRecorderSampled);
    QObject::connect(source, &Source::signalDropped, log, &ShowLog::onSignalDropped);
}

} // namespace zun
