#include "telemetry/nativeimages.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>

#include <elf.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr qint64 kMaxNoteBytes = 64 * 1024;

QString hexAddress(quint64 address)
{
    return QStringLiteral("0x") + QString::number(address, 16);
}

// The notes of one PT_NOTE segment, looking for NT_GNU_BUILD_ID.
// GCC 12 at -O3 takes an empty array's shared byte for the notes and warns
// that the header cannot fit, which the loop's bound already rules out.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
#pragma GCC diagnostic ignored "-Wstringop-overread"
std::optional<QByteArray> buildIdInNotes(const QByteArray& notes)
{
    qsizetype at = 0;
    auto align4 = [](qsizetype n) { return (n + 3) & ~qsizetype(3); };
    while (at + qsizetype(sizeof(Elf64_Nhdr)) <= notes.size()) {
        Elf64_Nhdr header;
        std::memcpy(&header, notes.constData() + at, sizeof header);
        const qsizetype nameAt = at + qsizetype(sizeof header);
        const qsizetype descAt = nameAt + align4(qsizetype(header.n_namesz));
        const qsizetype next = descAt + align4(qsizetype(header.n_descsz));
        if (header.n_namesz > kMaxNoteBytes || header.n_descsz > kMaxNoteBytes || next > notes.size() || next <= at)
            return std::nullopt;
        if (header.n_type == NT_GNU_BUILD_ID && header.n_namesz == 4
            && std::memcmp(notes.constData() + nameAt, "GNU", 4) == 0 && header.n_descsz > 0)
            return notes.mid(descAt, qsizetype(header.n_descsz));
        at = next;
    }
    return std::nullopt;
}
#pragma GCC diagnostic pop

} // namespace

namespace NativeImages {

std::optional<QByteArray> buildId(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    Elf64_Ehdr elf;
    if (file.read(reinterpret_cast<char*>(&elf), sizeof elf) != qint64(sizeof elf)
        || std::memcmp(elf.e_ident, ELFMAG, SELFMAG) != 0 || elf.e_ident[EI_CLASS] != ELFCLASS64
        || elf.e_phentsize != sizeof(Elf64_Phdr) || elf.e_phnum == 0 || elf.e_phnum > 256)
        return std::nullopt;
    for (int i = 0; i < elf.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!file.seek(qint64(elf.e_phoff) + qint64(i) * qint64(sizeof segment))
            || file.read(reinterpret_cast<char*>(&segment), sizeof segment) != qint64(sizeof segment))
            return std::nullopt;
        if (segment.p_type != PT_NOTE || segment.p_filesz == 0 || segment.p_filesz > kMaxNoteBytes)
            continue;
        if (!file.seek(qint64(segment.p_offset)))
            continue;
        if (auto id = buildIdInNotes(file.read(qint64(segment.p_filesz))))
            return id;
    }
    return std::nullopt;
}

QList<NativeImage> fromMemoryMap(const QByteArray& maps)
{
    QList<NativeImage> images;
    QHash<QString, qsizetype> indexOf;
    for (const QByteArray& line : maps.split('\n')) {
        // start-end perms offset device inode path
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 6 || !fields[5].startsWith('/'))
            continue;
        const QList<QByteArray> range = fields[0].split('-');
        bool startOk = false, endOk = false, offsetOk = false;
        const quint64 start = range.value(0).toULongLong(&startOk, 16);
        const quint64 end = range.value(1).toULongLong(&endOk, 16);
        const quint64 offset = fields[2].toULongLong(&offsetOk, 16);
        if (range.size() != 2 || !startOk || !endOk || !offsetOk || end <= start)
            continue;
        const QString path = QString::fromUtf8(fields.mid(5).join(' '));
        if (path.endsWith(QLatin1String(" (deleted)")))
            continue;
        const auto known = indexOf.constFind(path);
        if (known == indexOf.constEnd()) {
            if (offset != 0 || images.size() >= kMaxImages)
                continue; // a module starts where its file does
            indexOf.insert(path, images.size());
            images.append(NativeImage{path, start, end - start, {}});
            continue;
        }
        NativeImage& image = images[*known];
        if (end > image.imageAddress)
            image.imageSize = std::max(image.imageSize, end - image.imageAddress);
    }
    // Only ELF files are modules (fonts and data files are mapped too).
    QList<NativeImage> modules;
    for (NativeImage& image : images) {
        QFile file(image.codeFile);
        if (!file.open(QIODevice::ReadOnly) || file.read(SELFMAG) != QByteArray(ELFMAG, SELFMAG))
            continue;
        image.buildId = buildId(image.codeFile).value_or(QByteArray());
        modules.append(image);
    }
    return modules;
}

QString debugId(const QByteArray& buildId)
{
    QByteArray data = buildId.left(16);
    data.append(QByteArray(16 - data.size(), '\0'));
    std::reverse(data.begin(), data.begin() + 4);
    std::reverse(data.begin() + 4, data.begin() + 6);
    std::reverse(data.begin() + 6, data.begin() + 8);
    const QByteArray hex = data.toHex();
    return QString::fromLatin1(hex.left(8) + '-' + hex.mid(8, 4) + '-' + hex.mid(12, 4) + '-' + hex.mid(16, 4) + '-'
                               + hex.mid(20));
}

QJsonObject debugMeta(const QList<NativeImage>& images)
{
    QJsonArray list;
    for (const NativeImage& image : images) {
        // The file name is enough to match symbols; its folder could be a home
        // folder, which names the user.
        QJsonObject entry{{"type", "elf"},
                          {"code_file", QFileInfo(image.codeFile).fileName()},
                          {"image_addr", hexAddress(image.imageAddress)},
                          {"image_size", qint64(image.imageSize)}};
        if (!image.buildId.isEmpty()) {
            entry.insert("code_id", QString::fromLatin1(image.buildId.toHex()));
            entry.insert("debug_id", debugId(image.buildId));
        }
        list.append(entry);
    }
    return QJsonObject{{"images", list}};
}

} // namespace NativeImages
