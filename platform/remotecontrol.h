#pragma once

#include <QString>

#include <functional>

// Lets other programs of the user's session reach the running instance: how
// a desktop's own keyboard shortcut opens the panel where Kestrio cannot
// watch the keyboard itself.
class RemoteControl {
public:
    using Toggle = std::function<void(const QString& activationToken)>;

    virtual ~RemoteControl();

    // Offers the toggle of the panel; requests arrive on the main thread.
    virtual void publish(Toggle toggle) = 0;

};
