#pragma once

#include <QString>

#include <optional>

// Starting this program when the user logs in.
class LoginItem {
public:
    virtual ~LoginItem();

    // Each gives the failure's description, or nothing when it worked.
    virtual std::optional<QString> registerItem() = 0;
    virtual std::optional<QString> unregisterItem() = 0;

};
