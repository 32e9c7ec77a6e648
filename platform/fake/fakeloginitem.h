#pragma once

#include "platform/loginitem.h"

#include <QStringList>

// Records the calls; fails each with `failure` when a test sets one.
class FakeLoginItem final : public LoginItem {
public:
    QStringList calls;
    std::optional<QString> failure;

    std::optional<QString> registerItem() override
    {
        calls << QStringLiteral("register");
        return failure;
    }
    std::optional<QString> unregisterItem() override
    {
        calls << QStringLiteral("unregister");
        return failure;
    }
};
