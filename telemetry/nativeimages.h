#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// The modules (executable and shared libraries) a process had loaded, named
// the way the crash service finds their debug files: by the build id the
// linker wrote into each ELF file.
struct NativeImage {
    QString codeFile;
    quint64 imageAddress = 0;
    quint64 imageSize = 0;
    QByteArray buildId; // empty when the file has none (or could not be read)

    friend bool operator==(const NativeImage&, const NativeImage&) = default;
};

namespace NativeImages {

// At most this many modules are listed; a real process has a few hundred.
inline constexpr qsizetype kMaxImages = 1000;

// The ELF files mapped in a process, from the text of its /proc/PID/maps,
// each with the build id read from the file on disk. Lines that are not a
// file mapping, or not understood, are passed over.
QList<NativeImage> fromMemoryMap(const QByteArray& maps);
// The GNU build-id note of an ELF file, if it has one.
std::optional<QByteArray> buildId(const QString& path);
// The crash service's debug identifier for a build id: its first 16 bytes as
// a UUID, the first three fields read little-endian.
QString debugId(const QByteArray& buildId);
// The event's "debug_meta" part.
QJsonObject debugMeta(const QList<NativeImage>& images);

} // namespace NativeImages
