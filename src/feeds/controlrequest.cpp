#include "feeds/controlrequest.h"

#include "receivers/receivername.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace zun {

namespace {
constexpr qsizetype kMaxPayload = 1024;
constexpr int kNameLength = 6;
} // namespace

std::variant<ControlRequest, QString> parseControlRequest(const QString &addressLevel,
                                                          const QByteArray &payload)
{
    ControlRequest request;
    bool ok = false;
    request.address = addressLevel.toInt(&ok);
    if (addressLevel.size() != 2 || !ok || request.address < 1 || request.address > 64)
        return QStringLiteral("the address must be 01 to 64, not \"%1\"").arg(addressLevel);
    if (payload.size() > kMaxPayload)
        return QStringLiteral("the request is longer than %1 bytes").arg(kMaxPayload);
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(payload, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject())
        return QStringLiteral("the request is not a JSON object");
    const QJsonObject object = document.object();
    if (object.size() != 1)
        return QStringLiteral("one key per request: mute, name or bringBack");
    const QString key = object.begin().key();
    const QJsonValue value = object.begin().value();
    if (key == QLatin1String("mute")) {
        if (!value.isBool())
            return QStringLiteral("mute expects true or false");
        request.kind = ControlRequest::Kind::Mute;
        request.mute = value.toBool();
    } else if (key == QLatin1String("name")) {
        if (!value.isString())
            return QStringLiteral("name expects a text");
        request.kind = ControlRequest::Kind::Name;
        request.name = value.toString();
        if (request.name.size() > kNameLength || !nameTextAllowed(request.name))
            return QStringLiteral("name takes up to 6 characters: 0-9, A-Z, blank and * + , - . /");
    } else if (key == QLatin1String("bringBack")) {
        if (value != QJsonValue(true))
            return QStringLiteral("bringBack expects true");
        request.kind = ControlRequest::Kind::BringBack;
    } else {
        return QStringLiteral("unknown key \"%1\": mute, name or bringBack").arg(key);
    }
    return request;
}

QByteArray controlResultJson(const QString &error)
{
    QJsonObject result{{QStringLiteral("ok"), error.isEmpty()}};
    if (!error.isEmpty())
        result.insert(QStringLiteral("error"), error);
    return QJsonDocument(result).toJson(QJsonDocument::Compact);
}

} // namespace zun
