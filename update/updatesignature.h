#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstdint>
#include <optional>

// Checks a downloaded release against the maker's detached signature, in the
// format of the minisign tool (Ed25519 over the file's BLAKE2b-512 hash, plus
// a signature over the trusted comment). Only the prehashed form is taken:
// it is what minisign makes by default and needs no whole file in memory.
class UpdateSignature {
public:
    struct PublicKey {
        std::array<std::uint8_t, 8> keyId{};
        std::array<std::uint8_t, 32> key{};
    };

    // The key from its base64 line ("RW…"), alone or in a minisign .pub file.
    static std::optional<PublicKey> parsePublicKey(const QString& text);

    // Why the file at `path` does not carry a valid signature by `publicKey`,
    // or nothing when it does. `signature` is the .minisig file's content.
    static std::optional<QString> check(const QString& path, const QByteArray& signature, const QString& publicKey);
};
