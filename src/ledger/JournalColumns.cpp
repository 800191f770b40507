#include "ledger/JournalColumns.h"

#include <QHash>

namespace kx {

namespace {

constexpr Qt::Alignment Left = Qt::AlignLeft | Qt::AlignVCenter;
constexpr Qt::Alignment Centre = Qt::AlignCenter;
constexpr Qt::Alignment Right = Qt::AlignRight | Qt::AlignVCenter;
constexpr Qt::Alignment ByType = {};

const JournalColumns::Layout Layouts[JournalColumns::Count] = {
    {"SeqNo", "", Sheet::TypeLong, Left, false, "", 255},
    {"ShowName", "日期", Sheet::TypeString, Left, false, "", 1545},
    {"JnlDate", "日期", Sheet::TypeString, Left, true, "yyyy年MM月dd日", 1545},
    {"JnlNo", "单据号", Sheet::TypeString, Left, false, "", 655},
    {"AccName", "对方科目", Sheet::TypeString, Left, false, "", 900},
    {"AccDoc", "记账凭证", Sheet::TypeString, Left, false, "", 900},
    {"Explain", "摘要", Sheet::TypeString, Left, false, "", 2500},
    {"Debit", "借方金额", Sheet::TypeCurrency, Right, false, "", 1200},
    {"Credit", "贷方金额", Sheet::TypeCurrency, Right, false, "", 1200},
    {"Rate", "汇率", Sheet::TypeCurrency, Right, true, "", 675},
    {"Forex", "外币", Sheet::TypeCurrency, Right, true, "", 975},
    {"Dir", "方向", Sheet::TypeString, Centre, false, "", 420},
    {"Balance", "余额", Sheet::TypeCurrency, Right, false, "", 1200},
    {"fxBalance", "外币余额", Sheet::TypeCurrency, Right, true, "", 1200},
    {"Field1", "字段一", Sheet::TypeString, Left, true, "", 1000},
    {"Field2", "字段二", Sheet::TypeString, Left, true, "", 1000},
    {"Field3", "字段三", Sheet::TypeString, Left, true, "", 1000},
    {"Field4", "字段四", Sheet::TypeString, Left, true, "", 1000},
    {"Remark", "备注", Sheet::TypeString, Left, true, "", 1000},
    {"AssistName", "日记账", Sheet::TypeString, Left, false, "", 1000},
    {"AccCode", "AccCode", Sheet::TypeString, ByType, true, "", 10},
    {"AccID", "AccID", Sheet::TypeLong, ByType, true, "", 10},
    {"DirID", "DirID", Sheet::TypeLong, ByType, true, "", 10},
    {"RecID", "RecID", Sheet::TypeLong, ByType, true, "", 10},
    {"DocID", "DocID", Sheet::TypeLong, ByType, true, "", 10},
    {"Flag", "Flag", Sheet::TypeString, Left, true, "", 2000},
    {"Tag", "Tag", Sheet::TypeLong, ByType, true, "", 10},
    {"Locked", "Locked", Sheet::TypeLong, ByType, true, "", 10},
    {"Row", "Row", Sheet::TypeLong, ByType, true, "", 10},
    // Not stored with the record: ticked when a bank statement line is matched to it.
    {"Reconciled", "对账", Sheet::TypeString, Centre, true, "", 400},
};

struct Keys {
    std::array<QString, JournalColumns::Count> keys;
    QHash<QString, JournalColumns::Column> byKey;
    Keys()
    {
        for (int c = 0; c < JournalColumns::Count; ++c) {
            keys[std::size_t(c)] = QString::fromLatin1(Layouts[c].key);
            byKey.insert(keys[std::size_t(c)], JournalColumns::Column(c));
        }
    }
};

const Keys &keys()
{
    static const Keys k;
    return k;
}

} // namespace

const QString &JournalColumns::key(Column column)
{
    return keys().keys[std::size_t(column)];
}

const JournalColumns::Layout &JournalColumns::layout(Column column)
{
    return Layouts[column];
}

JournalColumns::Column JournalColumns::fromKey(const QString &key)
{
    return keys().byKey.value(key, Count);
}

QString JournalColumns::keyList(std::initializer_list<Column> columns)
{
    QString list(QLatin1Char('|'));
    for (Column c : columns)
        list += key(c) + QLatin1Char('|');
    return list;
}

bool JournalColumns::inList(const QString &list, const QString &key)
{
    return !key.isEmpty() && list.contains(QLatin1Char('|') + key + QLatin1Char('|'));
}

const QString &JournalColumns::amountKeys()
{
    static const QString list = keyList({Debit, Credit, Rate, Forex, Dir, Balance, fxBalance});
    return list;
}

JournalColumns::JournalColumns(const Sheet &grid)
{
    for (int c = 0; c < Count; ++c)
        m_index[std::size_t(c)] = grid.colIndex(key(Column(c)));
}

} // namespace kx
