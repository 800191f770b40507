#pragma once

namespace kx {

class JournalPrivate;

/// The voucher group of the context menu: look at a voucher (or make one),
/// pick one, remove links, make a voucher.
class JournalVoucherCommands
{
public:
    /// Binds the voucher entries in \a d's command registry.
    static void offer(JournalPrivate &d);
};

} // namespace kx
