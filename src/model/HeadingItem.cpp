#include "HeadingItem.h"

#include <QJsonValue>

#include <cmath>
#include <limits>

static std::optional<int> integralLevel(double value)
{
    if (!std::isfinite(value) || std::trunc(value) != value
        || value < double(std::numeric_limits<int>::min())
        || value > double(std::numeric_limits<int>::max()))
        return std::nullopt;
    return int(value);
}

std::optional<HeadingItem> HeadingItem::fromJson(const QJsonObject &object)
{
    const QJsonValue id = object.value(u"id");
    const QJsonValue level = object.value(u"level");
    const QJsonValue text = object.value(u"text");
    if (!id.isString() || !level.isDouble() || !text.isString())
        return std::nullopt;
    const std::optional<int> levelValue = integralLevel(level.toDouble());
    if (!levelValue)
        return std::nullopt;
    return HeadingItem {id.toString(), *levelValue, text.toString()};
}

std::optional<HeadingItem> HeadingItem::fromVariantMap(const QVariantMap &map)
{
    return fromJson(QJsonObject::fromVariantMap(map));
}

QJsonObject HeadingItem::toJson() const
{
    return QJsonObject {{QStringLiteral("id"), id},
                        {QStringLiteral("level"), level},
                        {QStringLiteral("text"), text}};
}
