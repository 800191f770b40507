// The command table: every command's names, text, keys, group and the
// condition it runs under, in menu order. The menu item, its keys and the
// DoCommand name all come from one line, so they cannot disagree.
#include "ledger/CommandRegistry.h"

namespace kx {

const std::vector<CommandSpec> &CommandRegistry::table()
{
    using I = CommandId;
    using C = CommandCondition;
    constexpr KeyScope J = KeyScope::Journal;
    constexpr KeyScope G = KeyScope::Grid;
    // The lines stand in CommandId order: the id is the line's index.
    static const std::vector<CommandSpec> lines = {
        {I::Undo, "mnuUndo", "", "撤销", "edit", "Ctrl+Z", J, C::CanUndo, false},
        {I::Redo, "mnuRedo", "", "恢复", "edit", "Ctrl+Y", J, C::CanRedo, false},
        {I::Cut, "mnuCut", "", "剪切", "edit", "Ctrl+X", G, C::SelectionEditable, false},
        {I::Copy, "mnuCopy", "Copy", "复制", "edit", "Ctrl+C", G, C::HasRows, false},
        {I::Paste, "mnuPaste", "", "粘贴", "edit", "Ctrl+V", G, C::PasteTarget, false},
        {I::Clear, "mnuClear", "", "清除", "edit", "", J, C::SelectionEditable, false},

        {I::InsertRows, "mnuInsertRows", "", "插入行", "rows", "Ins", G, C::InsertionOpen, false},
        {I::DeleteRows, "mnuDeleteRows", "", "删除行", "rows", "Del", G, C::SelectionDeletable, false},
        {I::Renumber, "mnuRenumber", "", "重新编号", "rows", "", J, C::SelectionRenumberable, false},
        {I::DelHistory, "mnuDelHistory", "", "删除建账前的记录", "rows", "", J, C::ChangeableRecords, false},

        {I::Save, "mnuSave", "", "保存", "book", "Ctrl+S", J, C::Dirty, false},
        {I::InsSumRow, "mnuInsSumRow", "", "插入汇总行", "book", "", J, C::DatedCurrentRow, false},
        {I::RemoveSumRow, "mnuRemoveSumRow", "", "删除汇总行", "book", "", J, C::SummaryCurrentRow, false},
        {I::CloseBook, "mnuCloseBook", "", "月末结账", "book", "", J, C::ChangeableRecords, false},
        {I::CheckBook, "mnuCheckBook", "", "检查账簿", "book", "", J, C::HasRecords, false},
        {I::Statistics, "mnuStatistics", "", "统计", "book", "", J, C::HasRecords, false},
        {I::Recalc, "mnuRecalc", "", "重新计算余额", "book", "", J, C::HasRecords, false},
        {I::ExplainMemo, "mnuExplainMemo", "ExplainMemo", "常用摘要...", "book", "", J, C::ChangeableBook, false},

        {I::AccDoc, "mnuAccDoc", "", "查看凭证", "voucher", "", J, C::VoucherToLookAt, false},
        {I::DocSelect, "mnuDocSelect", "", "选择凭证...", "voucher", "", J, C::SelectionLinkable, false},
        {I::RemoveDoc, "mnuRemoveDoc", "", "删除凭证链接", "voucher", "", J, C::SelectionLinked, false},
        {I::MakeDoc, "mnuMakeDoc", "", "生成凭证", "voucher", "", J, C::VoucherToMake, false},
        {I::VoucherPerRecord, "mnuVoucherPerRecord", "", "按记录", "voucher", "", J, C::Always, true},
        {I::VoucherPerType, "mnuVoucherPerType", "", "按收付类型", "voucher", "", J, C::Always, true},
        {I::VoucherAllInOne, "mnuVoucherAllInOne", "", "合并为一张", "voucher", "", J, C::Always, true},

        {I::Find, "mnuFind", "", "查找...", "output", "Ctrl+F", J, C::HasRows, false},
        {I::Export, "mnuExport", "Export", "导出...", "output", "", J, C::HasRows, false},
        {I::Print, "mnuPrint", "", "打印预览...", "output", "", J, C::HasRows, false},
        {I::Reconcile, "mnuReconcile", "Reconcile", "银行对账...", "output", "", J, C::OneBookRecords, false},
        {I::DailyReport, "mnuDailyReport", "DailyReport", "资金日报表...", "output", "", J, C::Connected, false},

        {I::PackJnl, "mnuPackJnl", "", "合并显示", "view", "", J, C::Always, true},
        {I::Refresh, "mnuRefresh", "Refresh", "刷新", "view", "F5", J, C::BookChosen, false},
        {I::DefaultFormatItem, "mnuDefaultFormat", "", "默认格式", "view", "", J, C::Always, false},
        {I::FieldShow, "mnuFieldShow", "", "显示字段", "view", "", J, C::Always, false},
        {I::Unreconciled, "mnuUnreconciled", "Unreconciled", "只看未对账记录", "view", "", J, C::OneBookRecords, true},
        {I::SideTask, "mnuSideTask", "", "侧边任务", "view", "", J, C::Always, true},

        // A host's own commands, without a menu item. ("Find" is not one: it
        // is accepted and does nothing, as an unknown name; the find bar is the user's.)
        {I::DefaultFormat, "", "DefaultFormat", "", "", "", J, C::Always, false},
        {I::AfterSetFormat, "", "AfterSetFormat", "", "", "", J, C::Always, false},
        {I::SetColFont, "", "SetColFont", "", "", "", J, C::Always, false},
        {I::SideVisible, "", "SideVisible", "", "", "", J, C::Always, false},
        // Keys of the find bar.
        {I::FindNext, "", "", "", "", "F3", J, C::Always, false},
        {I::FindPrevious, "", "", "", "", "Shift+F3", J, C::Always, false},
    };
    return lines;
}

} // namespace kx
