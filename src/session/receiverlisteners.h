#pragma once

#include "alarms/alarmengine.h"
#include "receivers/receiverevents.h"
#include "showlog/showlog.h"

namespace zun {

// Connects the alarm engine and the show log to the receiver layer's signals
// (the receiver bus, or a stand-in in tests). Direct connections: each slot
// only compares and buffers.
inline void connectMonitoring(const ReceiverEvents *source, AlarmEngine *alarms, ShowLog *log)
{
    QObject::connect(source, &ReceiverEvents::receiverFound, alarms, &AlarmEngine::onReceiverFound);
    QObject::connect(source, &ReceiverEvents::levelsRead, alarms, &AlarmEngine::onLevelsRead);
    QObject::connect(source, &ReceiverEvents::wentOffline, alarms, &AlarmEngine::onWentOffline);
    QObject::connect(source, &ReceiverEvents::cameBack, alarms, &AlarmEngine::onCameBack);

    QObject::connect(source, &ReceiverEvents::receiverFound, log, &ShowLog::onReceiverFound);
    QObject::connect(source, &ReceiverEvents::receiverChanged, log, &ShowLog::onReceiverChanged);
    QObject::connect(source, &ReceiverEvents::levelsRead, log, &ShowLog::onLevelsRead);
    QObject::connect(source, &ReceiverEvents::wentOffline, log, &ShowLog::onWentOffline);
    QObject::connect(source, &ReceiverEvents::cameBack, log, &ShowLog::onCameBack);
    QObject::connect(source, &ReceiverEvents::scanPointRead, log, &ShowLog::onScanPointRead);
    QObject::connect(source, &ReceiverEvents::recorderSampled, log, &ShowLog::onRecorderSampled);
    QObject::connect(source, &ReceiverEvents::signalDropped, log, &ShowLog::onSignalDropped);
}

} // namespace zun
