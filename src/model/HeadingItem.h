#pragma once

#include <QHashFunctions>
#include <QJsonObject>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

#include <optional>

// One heading of a document's outline, as the editor page reports it. The page chooses `id`
// and the outline hands it back to scroll the page to that heading.
class HeadingItem
{
    Q_GADGET
    Q_PROPERTY(QString id MEMBER id CONSTANT)
    Q_PROPERTY(int level MEMBER level CONSTANT)
    Q_PROPERTY(QString text MEMBER text CONSTANT)

public:
    QString id;
    int level = 0;
    QString text;

    // Decoding needs all three keys with their JSON types ("level" an integral number);
    // extra keys are ignored.
    static std::optional<HeadingItem> fromJson(const QJsonObject &object);
    // The same rules for an object that arrived through the web channel.
    static std::optional<HeadingItem> fromVariantMap(const QVariantMap &map);
    QJsonObject toJson() const;

    friend bool operator==(const HeadingItem &a, const HeadingItem &b)
    {
        return a.id == b.id && a.level == b.level && a.text == b.text;
    }
    friend bool operator!=(const HeadingItem &a, const HeadingItem &b) { return !(a == b); }
};

inline size_t qHash(const HeadingItem &h, size_t seed = 0) noexcept
{
    return qHashMulti(seed, h.id, h.level, h.text);
}

Q_DECLARE_METATYPE(HeadingItem)
