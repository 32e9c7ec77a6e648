#include "update/updatesignature.h"

#include <QFile>
#include <QList>

#include <sodium.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr char kPrehashed[] = "ED";
constexpr qsizetype kSignatureBytes = 2 + 8 + crypto_sign_BYTES;

std::optional<QByteArray> strictBase64(const QByteArray& text)
{
    const auto decoded = QByteArray::fromBase64Encoding(text.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return *decoded;
}

// The file's BLAKE2b-512 hash, read in pieces.
std::optional<QByteArray> fileHash(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, crypto_generichash_BYTES_MAX);
    QByteArray chunk(1 << 16, Qt::Uninitialized);
    for (;;) {
        const qint64 n = file.read(chunk.data(), chunk.size());
        if (n < 0)
            return std::nullopt;
        if (n == 0)
            break;
        crypto_generichash_update(&state, reinterpret_cast<const unsigned char*>(chunk.constData()), quint64(n));
    }
    QByteArray hash(crypto_generichash_BYTES_MAX, Qt::Uninitialized);
    crypto_generichash_final(&state, reinterpret_cast<unsigned char*>(hash.data()), size_t(hash.size()));
    return hash;
}

bool verified(const QByteArray& signature, const QByteArray& message, const UpdateSignature::PublicKey& key)
{
    return crypto_sign_verify_detached(reinterpret_cast<const unsigned char*>(signature.constData()),
                                       reinterpret_cast<const unsigned char*>(message.constData()),
                                       quint64(message.size()), key.key.data())
        == 0;
}

} // namespace

std::optional<UpdateSignature::PublicKey> UpdateSignature::parsePublicKey(const QString& text)
{
    // A .pub file: a comment line, then the key line; the key line alone also does.
    QList<QByteArray> lines = text.toUtf8().trimmed().split('\n');
    const auto decoded = strictBase64(lines.last());
    if (!decoded || decoded->size() != 2 + 8 + crypto_sign_PUBLICKEYBYTES || !decoded->startsWith("Ed"))
        return std::nullopt;
    PublicKey key;
    std::memcpy(key.keyId.data(), decoded->constData() + 2, key.keyId.size());
    std::memcpy(key.key.data(), decoded->constData() + 10, key.key.size());
    return key;
}

std::optional<QString> UpdateSignature::check(const QString& path, const QByteArray& signature, const QString& publicKey)
{
    if (sodium_init() < 0)
        return QStringLiteral("the signature checker could not start");
    const std::optional<PublicKey> key = parsePublicKey(publicKey);
    if (!key)
        return QStringLiteral("this copy of Kestrio has no valid key to check updates with");

    QList<QByteArray> lines = signature.split('\n');
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    const QByteArray trustedPrefix = "trusted comment: ";
    if (lines.size() < 4 || !lines[0].startsWith("untrusted comment: ") || !lines[2].startsWith(trustedPrefix))
        return QStringLiteral("the signature is not in minisign's format");
    const auto body = strictBase64(lines[1]);
    const auto global = strictBase64(lines[3]);
    if (!body || body->size() != kSignatureBytes || !global || global->size() != crypto_sign_BYTES)
        return QStringLiteral("the signature is not in minisign's format");
    if (!body->startsWith(kPrehashed))
        return QStringLiteral("the signature is not of the prehashed kind Kestrio checks");
    if (!std::equal(key->keyId.begin(), key->keyId.end(), reinterpret_cast<const std::uint8_t*>(body->constData() + 2)))
        return QStringLiteral("it was signed with another key than the maker's");

    const QByteArray fileSignature = body->mid(10);
    const std::optional<QByteArray> hash = fileHash(path);
    if (!hash)
        return QStringLiteral("the downloaded archive could not be read");
    if (!verified(fileSignature, *hash, *key))
        return QStringLiteral("the signature does not match the archive");
    if (!verified(*global, fileSignature + lines[2].mid(trustedPrefix.size()), *key))
        return QStringLiteral("the signature's trusted comment was altered");
    return std::nullopt;
}
