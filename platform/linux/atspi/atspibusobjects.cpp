#include "platform/linux/atspi/atspibusobjects.h"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include <vector>

namespace {

const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kAction = QStringLiteral("org.a11y.atspi.Action");

// Bulk-cache replies hold every object of an application; more than this is
// not an application's menus.
constexpr int kMaxCacheItems = 50000;

AtspiRef readRef(const QDBusArgument& argument)
{
    QString bus;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> bus >> path;
    argument.endStructure();
    return {bus, path.path()};
}

AtspiObjects::Value decode(AtspiObjects::Question question, const QDBusMessage& reply)
{
    using Question = AtspiObjects::Question;
    if (question == Question::children)
        return AtspiBus::refsOf(reply, AtspiObjects::kMaxChildren);
    if (question == Question::state) {
        if (const auto states = AtspiBus::statesOf(reply))
            return *states;
        return {};
    }
    const std::optional<QVariant> value = DBusCalls::valueOf(reply);
    if (!value)
        return {};
    switch (question) {
    case Question::role:
        if (value->typeId() == QMetaType::UInt)
            return value->toUInt();
        return {};
    case Question::name:
    case Question::keyBinding:
        if (value->typeId() == QMetaType::QString)
            return value->toString();
        return {};
    case Question::parent:
        if (value->canConvert<QDBusArgument>()) {
            const QDBusArgument argument = value->value<QDBusArgument>();
            if (argument.currentSignature() == QLatin1String("(so)"))
                return readRef(argument);
        }
        return {};
    case Question::children:
    case Question::state:
        break;
    }
    return {};
}

} // namespace

QList<AtspiObjects::Answer> AtspiBusObjects::ask(const QList<Ask>& questions)
{
    if (stopped())
        return QList<Answer>(questions.size(), Answer{true, {}});
    std::vector<QDBusPendingCall> calls;
    calls.reserve(size_t(questions.size()));
    for (const Ask& ask : questions) {
        switch (ask.question) {
        case Question::children:
            calls.push_back(bus_.call(ask.ref, kAccessible, QStringLiteral("GetChildren")));
            break;
        case Question::role:
            calls.push_back(bus_.call(ask.ref, kAccessible, QStringLiteral("GetRole")));
            break;
        case Question::state:
            calls.push_back(bus_.call(ask.ref, kAccessible, QStringLiteral("GetState")));
            break;
        case Question::name:
            calls.push_back(bus_.property(ask.ref, kAccessible, QStringLiteral("Name")));
            break;
        case Question::keyBinding:
            calls.push_back(bus_.call(ask.ref, kAction, QStringLiteral("GetKeyBinding"), {0}));
            break;
        case Question::parent:
            calls.push_back(bus_.property(ask.ref, kAccessible, QStringLiteral("Parent")));
            break;
        }
    }
    QList<Answer> answers;
    answers.reserve(questions.size());
    for (qsizetype i = 0; i < questions.size(); ++i) {
        calls[size_t(i)].waitForFinished();
        const QDBusMessage reply = calls[size_t(i)].reply();
        answers.append({DBusCalls::timedOut(reply), decode(questions[i].question, reply)});
    }
    return answers;
}

std::optional<QList<AtspiCacheItem>> AtspiBusObjects::cache(const AtspiRef& application, bool& timedOut)
{
    // GTK keeps every object's role, name and state in one cache the whole
    // application answers in a single call; Qt's is empty.
    if (stopped()) {
        timedOut = true;
        return std::nullopt;
    }
    const AtspiRef cache{application.bus, QStringLiteral("/org/a11y/atspi/cache")};
    const QDBusMessage reply = bus_.callAndWait(cache, QStringLiteral("org.a11y.atspi.Cache"), QStringLiteral("GetItems"));
    timedOut = DBusCalls::timedOut(reply);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()
        || !reply.arguments().first().canConvert<QDBusArgument>())
        return std::nullopt;
    return readCacheItems(reply.arguments().first().value<QDBusArgument>());
}

std::optional<QList<AtspiCacheItem>> AtspiBusObjects::readCacheItems(const QDBusArgument& reply)
{
    const QString signature = reply.currentSignature();
    const bool withCounts = signature == QLatin1String("a((so)(so)(so)iiassusau)");
    const bool withChildren = signature == QLatin1String("a((so)(so)(so)a(so)assusau)");
    if (!withCounts && !withChildren)
        return std::nullopt;

    QList<AtspiCacheItem> items;
    reply.beginArray();
    while (!reply.atEnd()) {
        AtspiCacheItem item;
        reply.beginStructure();
        item.ref = readRef(reply);
        readRef(reply); // application
        item.parent = readRef(reply);
        if (withCounts) {
            int index = 0;
            reply >> index >> item.childCount;
        } else {
            QList<AtspiRef> children;
            reply.beginArray();
            while (!reply.atEnd()) {
                const AtspiRef child = readRef(reply);
                if (children.size() < kMaxChildren)
                    children.append(child);
            }
            reply.endArray();
            item.children = children;
        }
        QStringList interfaces;
        QString description;
        reply >> interfaces >> item.name >> item.role >> description >> item.states;
        reply.endStructure();
        if (items.size() < kMaxCacheItems)
            items.append(item);
    }
    reply.endArray();
    return items;
}
