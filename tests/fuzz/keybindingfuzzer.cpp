// Feeds arbitrary key-binding texts (what another application answers to
// GetKeyBinding) and item names, which may carry a drawn shortcut after a
// tab, to the translations and the shortcut texts.
#include "base/platformwords.h"
#include "menu/shortcuttext.h"
#include "platform/linux/keybinding/keybinding.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void check(const std::optional<KeyChord>& key)
{
    if (!key)
        return;
    // A translated binding is a shortcut that can be shown: a named key, or
    // a key that types something.
    if (key->key.named.has_value() == !key->key.character.isEmpty())
        std::abort();
    if (key->key.named && int(*key->key.named) >= int(NamedKey::f1) + kFunctionKeys)
        std::abort();
    if (shortcutText(*key, PlatformWords::linuxDesktop().keys).isEmpty())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const qsizetype split = bytes.indexOf('\0');
    const QString binding = QString::fromUtf8(split < 0 ? bytes : bytes.left(split));
    const QString name = split < 0 ? QString() : QString::fromUtf8(bytes.mid(split + 1));
    check(translateKeyBinding(binding, name));
    check(translateDrawnShortcut(binding));
    const NameAndShortcut named = splitDrawnShortcut(name);
    if (named.name.size() > name.size())
        std::abort();
    check(named.key);
    return 0;
}
