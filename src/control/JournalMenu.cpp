#include "control/JournalMenu.h"

namespace kx {

JournalMenu::JournalMenu(QWidget *parent) : QMenu(parent)
{
    addItem(QStringLiteral("mnuCopy"), QStringLiteral("复制"));
    addItem(QStringLiteral("mnuCut"), QStringLiteral("剪切"));
    addItem(QStringLiteral("mnuPaste"), QStringLiteral("粘贴"));
    addItem(QStringLiteral("mnuClear"), QStringLiteral("清除"));
    addSeparator();
    addItem(QStringLiteral("mnuInsertRows"), QStringLiteral("插入行"));
    addItem(QStringLiteral("mnuDeleteRows"), QStringLiteral("删除行"));
    addItem(QStringLiteral("mnuRenumber"), QStringLiteral("重新编号"));
    addItem(QStringLiteral("mnuDelHistory"), QStringLiteral("删除建账前的记录"));
    addSeparator();
    addItem(QStringLiteral("mnuInsSumRow"), QStringLiteral("插入汇总行"));
    addItem(QStringLiteral("mnuRemoveSumRow"), QStringLiteral("删除汇总行"));
    addItem(QStringLiteral("mnuStatistics"), QStringLiteral("统计"));
    addItem(QStringLiteral("mnuCloseBook"), QStringLiteral("月末结账"));
    addItem(QStringLiteral("mnuCheckBook"), QStringLiteral("检查账簿"));
    addItem(QStringLiteral("mnuRecalc"), QStringLiteral("重新计算余额"));
    addSeparator();
    addItem(QStringLiteral("mnuLookAccDoc"), QStringLiteral("凭证"));
    addItem(QStringLiteral("mnuMakeDoc"), QStringLiteral("生成凭证"));
    addSeparator();
    addItem(QStringLiteral("mnuFind"), QStringLiteral("查找"));
    addItem(QStringLiteral("mnuExport"), QStringLiteral("导出"));
    addItem(QStringLiteral("mnuPrint"), QStringLiteral("打印"));
    addSeparator();
    addItem(QStringLiteral("mnuPackJnl"), QStringLiteral("合并显示"), true)->setEnabled(true);
    addItem(QStringLiteral("mnuRefresh"), QStringLiteral("刷新"));
    addItem(QStringLiteral("mnuDefaultFormat"), QStringLiteral("默认格式"));
    addItem(QStringLiteral("mnuFieldShow"), QStringLiteral("显示字段"));
    addSeparator();
    addItem(QStringLiteral("mnuSideTask"), QStringLiteral("侧边任务"), true)->setEnabled(true);
}

QAction *JournalMenu::addItem(const QString &name, const QString &text, bool checkable)
{
    QAction *a = addAction(text);
    a->setObjectName(name);
    a->setCheckable(checkable);
    a->setEnabled(false);
    return a;
}

QAction *JournalMenu::item(const QString &name) const
{
    return findChild<QAction *>(name, Qt::FindDirectChildrenOnly);
}

} // namespace kx
