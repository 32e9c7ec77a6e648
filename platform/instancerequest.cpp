#include "platform/instancerequest.h"

namespace {

bool isToken(const QByteArray& text)
{
    if (text.isEmpty() || text.size() > InstanceRequest::kMaxTokenLength)
        return false;
    for (char c : text) {
        if (c <= ' ' || c > '~')
            return false;
    }
    return true;
}

} // namespace

QByteArray InstanceRequest::encode() const
{
    QByteArray line = kind == Kind::toggle ? "toggle" : "reopen";
    const QByteArray token = activationToken.toUtf8();
    if (kind == Kind::toggle && isToken(token))
        line += ' ' + token;
    return line + '\n';
}

std::optional<InstanceRequest> InstanceRequest::decode(const QByteArray& line)
{
    const QByteArray text = line.trimmed();
    const qsizetype space = text.indexOf(' ');
    const QByteArray verb = space < 0 ? text : text.left(space);
    InstanceRequest request;
    if (verb == "reopen") {
        request.kind = Kind::reopen;
    } else if (verb == "toggle") {
        request.kind = Kind::toggle;
        const QByteArray token = space < 0 ? QByteArray() : text.mid(space + 1);
        if (isToken(token))
            request.activationToken = QString::fromLatin1(token);
    } else {
        return std::nullopt;
    }
    return request;
}
