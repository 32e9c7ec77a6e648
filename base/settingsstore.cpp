#include "base/settingsstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace {

bool readJson(QIODevice& device, QSettings::SettingsMap& map)
{
    const QByteArray bytes = device.readAll();
    if (bytes.trimmed().isEmpty())
        return true;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return false;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it)
        map.insert(it.key(), it.value().toVariant());
    return true;
}

bool writeJson(QIODevice& device, const QSettings::SettingsMap& map)
{
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it)
        object.insert(it.key(), QJsonValue::fromVariant(it.value()));
    return device.write(QJsonDocument(object).toJson(QJsonDocument::Indented)) >= 0;
}

QSettings::Format jsonFormat()
{
    static const QSettings::Format format = QSettings::registerFormat(QStringLiteral("json"), readJson, writeJson);
    return format;
}

bool isNumber(const QVariant& value)
{
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

// Keep an unreadable file aside instead of letting the next write replace it.
void setAsideIfUnreadable(const QSettings& settings, const QString& path)
{
    if (settings.status() != QSettings::FormatError)
        return;
    const QString aside = path + QStringLiteral(".unreadable-")
        + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddHHmmss"));
    QFile::copy(path, aside);
}

} // namespace

SettingsStore::SettingsStore(const QString& filePath)
{
    // The usage history names the menu commands the user runs: the file is
    // the user's alone. Made so before anything is written into it; later
    // writes replace it with a file of the same permissions.
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    QFile file(filePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    settings_ = std::make_unique<QSettings>(filePath, jsonFormat());
    setAsideIfUnreadable(*settings_, filePath);
}

SettingsStore::~SettingsStore() = default;

QString SettingsStore::standardPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                               + QStringLiteral("/kestrio/settings.json");
}

QString SettingsStore::filePath() const
{
    return settings_->fileName();
}

bool SettingsStore::contains(QAnyStringView key) const
{
    return settings_->contains(key);
}

QVariant SettingsStore::object(QAnyStringView key) const
{
    return settings_->value(key);
}

void SettingsStore::setObject(QAnyStringView key, const QVariant& value)
{
    settings_->setValue(key, value);
    settings_->sync();
}

void SettingsStore::remove(QAnyStringView key)
{
    settings_->remove(key);
    settings_->sync();
}

bool SettingsStore::boolValue(QAnyStringView key) const
{
    const QVariant value = object(key);
    if (value.metaType().id() == QMetaType::Bool)
        return value.toBool();
    if (isNumber(value))
        return value.toDouble() != 0;
    if (value.metaType().id() == QMetaType::QString) {
        const QString text = value.toString().trimmed();
        if (text.compare(u"true", Qt::CaseInsensitive) == 0 || text.compare(u"yes", Qt::CaseInsensitive) == 0)
            return true;
        return text.toLongLong() != 0;
    }
    return false;
}

qint64 SettingsStore::integerValue(QAnyStringView key) const
{
    const QVariant value = object(key);
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool() ? 1 : 0;
    case QMetaType::Double: {
        const double d = value.toDouble();
        // Out-of-range doubles would be undefined to convert.
        if (!(d > -9.2e18 && d < 9.2e18))
            return 0;
        return static_cast<qint64>(d);
    }
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::QString:
        return value.toLongLong();
    default:
        return 0;
    }
}

std::optional<QString> SettingsStore::stringValue(QAnyStringView key) const
{
    const QVariant value = object(key);
    if (value.metaType().id() == QMetaType::QString)
        return value.toString();
    if (isNumber(value))
        return value.toString();
    return std::nullopt;
}

std::optional<QDateTime> SettingsStore::dateValue(QAnyStringView key) const
{
    const QVariant value = object(key);
    QDateTime date;
    if (value.metaType().id() == QMetaType::QDateTime)
        date = value.toDateTime();
    else if (value.metaType().id() == QMetaType::QString)
        date = QDateTime::fromString(value.toString(), Qt::ISODateWithMs);
    if (!date.isValid())
        return std::nullopt;
    return date;
}

std::optional<QVariantMap> SettingsStore::dictionaryValue(QAnyStringView key) const
{
    const QVariant value = object(key);
    if (value.metaType().id() != QMetaType::QVariantMap)
        return std::nullopt;
    return value.toMap();
}

void SettingsStore::setBool(QAnyStringView key, bool value)
{
    setObject(key, value);
}

void SettingsStore::setInteger(QAnyStringView key, qint64 value)
{
    setObject(key, value);
}

void SettingsStore::setString(QAnyStringView key, const QString& value)
{
    setObject(key, value);
}

void SettingsStore::setDate(QAnyStringView key, const QDateTime& value)
{
    // JSON has no date type: ISO 8601 in UTC, with milliseconds.
    setObject(key, value.toUTC().toString(Qt::ISODateWithMs));
}

QString SettingsStore::appearance() const
{
    return stringValue(SettingsKey::appearance).value_or(QStringLiteral("system"));
}

bool SettingsStore::autoUpdateCheck() const
{
    const QVariant value = object(SettingsKey::autoUpdateCheck);
    if (value.metaType().id() == QMetaType::Bool)
        return value.toBool();
    return true;
}
