#pragma once

namespace kx {

class JournalPrivate;

/// Binds the command table to the control: what runs each command (the
/// rows, the book and the vouchers through their own classes; the view and
/// output here), the condition each menu item runs under, and the keys.
class JournalCommands
{
public:
    /// Binds every command of \a d's registry.
    static void offer(JournalPrivate &d);
    /// Answers the keys of every command that has some, as the menu shows
    /// them beside its items.
    static void bindKeys(JournalPrivate &d);
};

} // namespace kx
