#include "platform/linux/sway/swayipc.h"

#include <cstring>

namespace SwayIpc {

namespace {

constexpr char kMagic[] = "i3-ipc";
constexpr int kMagicSize = 6;
constexpr int kHeaderSize = kMagicSize + 8;

} // namespace

QByteArray encode(quint32 type, const QByteArray& payload)
{
    QByteArray message(kMagic, kMagicSize);
    const quint32 length = quint32(payload.size());
    message.append(reinterpret_cast<const char*>(&length), 4);
    message.append(reinterpret_cast<const char*>(&type), 4);
    message.append(payload);
    return message;
}

void Decoder::append(const QByteArray& bytes)
{
    if (!failed_)
        buffer_.append(bytes);
}

std::optional<Message> Decoder::next()
{
    if (failed_ || buffer_.size() < kHeaderSize)
        return std::nullopt;
    if (std::memcmp(buffer_.constData(), kMagic, kMagicSize) != 0) {
        failed_ = true;
        buffer_.clear();
        return std::nullopt;
    }
    quint32 length = 0, type = 0;
    std::memcpy(&length, buffer_.constData() + kMagicSize, 4);
    std::memcpy(&type, buffer_.constData() + kMagicSize + 4, 4);
    if (length > kMaxPayload) {
        failed_ = true;
        buffer_.clear();
        return std::nullopt;
    }
    if (buffer_.size() < kHeaderSize + qsizetype(length))
        return std::nullopt;
    Message message{type, buffer_.mid(kHeaderSize, length)};
    buffer_.remove(0, kHeaderSize + length);
    return message;
}

} // namespace SwayIpc
