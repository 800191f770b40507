#include "ledger/LedgerHost.h"

namespace kx {

LedgerHost::~LedgerHost() = default;

void LedgerHost::prompt(const QString &, bool) {}
void LedgerHost::note(const QString &text) { prompt(text, false); }
void LedgerHost::failure(const QString &text, bool showBox) { prompt(text, showBox); }
bool LedgerHost::cancels(const QString &) { return false; }
bool LedgerHost::ask(const QString &, const QString &) { return false; }
void LedgerHost::progress(int) {}
void LedgerHost::markDirty() {}
void LedgerHost::dirtyRestored(bool) {}
void LedgerHost::saved() {}
void LedgerHost::captionChanged(const QString &) {}
void LedgerHost::layoutChanged(bool) {}
bool LedgerHost::stopped() const { return false; }

LedgerHost &LedgerHost::none()
{
    static LedgerHost host;
    return host;
}

} // namespace kx
