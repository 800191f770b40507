// What a host drives from code: records entered by column key through the
// edit rules, columns shown and sized by key, the settings file, and the
// enum forms of export types, the balance direction and message kinds.
#include "editing/EditingBook.h"

#include <kxjournal/BookDirectory.h>
#include <kxjournal/GridView.h>
#include <kxjournal/PropertyBag.h>
#include <kxjournal/SettingsPropertyBag.h>

#include <QFile>
#include <QHeaderView>
#include <QSettings>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using kxtest::EditingBook;

namespace {

QMap<QString, QString> fields(std::initializer_list<std::pair<const char *, const char *>> list)
{
    QMap<QString, QString> out;
    for (const auto &f : list)
        out.insert(QString::fromLatin1(f.first), QString::fromUtf8(f.second));
    return out;
}

} // namespace

TEST(HostApi, ARecordEnteredByKeyGoesThroughTheRulesAndIsStored)
{
    EditingBook b;
    ASSERT_EQ(b.grid->rows(), 6) << "four records and the empty row";
    const int before = b.said.size();
    ASSERT_TRUE(b.journal->enterRecord(fields({{"Debit", "100+20"},
                                                {"Explain", "收回货款"},
                                                {"AccName", "yszk"},
                                                {"ShowName", "2025-01-20"}})))
        << qPrintable(b.said.mid(before).join(QLatin1Char('\n')));
    EXPECT_EQ(b.text(5, "AccName"), QStringLiteral("应收账款")) << "the entry code found the account";
    EXPECT_EQ(b.grid->number(5, b.col("AccID")), b.receivable);
    EXPECT_EQ(b.text(5, "Debit"), QStringLiteral("120")) << "the formula was worked out";
    EXPECT_EQ(b.grid->amount(5, b.col("Balance")), kx::Currency::fromRaw(13700000)) << "1250 + 120";
    EXPECT_EQ(b.grid->rows(), 7) << "a new empty row under the record";
    EXPECT_TRUE(b.journal->IsDirty());

    // An existing row by number, its key in another case: its credit of 50
    // becomes 25, the balances below follow.
    ASSERT_TRUE(b.journal->enterRecord(fields({{"credit", "25"}}), 4)) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(b.grid->amount(4, b.col("Balance")), kx::Currency::fromRaw(12750000));
    EXPECT_EQ(b.grid->amount(5, b.col("Balance")), kx::Currency::fromRaw(13950000));

    ASSERT_TRUE(b.journal->Save()) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(kxtest::storedAmount(b, 5, "Debit"), kx::Currency::fromRaw(1200000));
    EXPECT_EQ(kxtest::storedAmount(b, 4, "Credit"), kx::Currency::fromRaw(250000));

    // A text its rule refuses: false, the rule's message, that cell unwritten.
    b.boxes.clear();
    EXPECT_FALSE(b.journal->enterRecord(fields({{"ShowName", "2025-01-25"}, {"AccName", "没有这个科目"}})));
    EXPECT_EQ(b.text(6, "ShowName").left(4), QStringLiteral("2025")) << "the date before it stays, as typed";
    EXPECT_TRUE(b.text(6, "AccName").isEmpty());
}

TEST(HostApi, UnknownAndUntypedKeysAreRefusedBeforeAnythingIsWritten)
{
    EditingBook b;
    const int rows = b.grid->rows();
    for (const auto &bad : {fields({{"Explain", "甲"}, {"NoSuchKey", "1"}}),
                            fields({{"Explain", "甲"}, {"AccDoc", "记-1"}}),
                            fields({{"Explain", "甲"}, {"Balance", "99"}}),
                            fields({{"Explain", "甲"}, {"RecID", "7"}})}) {
        b.boxes.clear();
        EXPECT_FALSE(b.journal->enterRecord(bad)) << qPrintable(bad.keys().join(QLatin1Char(',')));
        ASSERT_EQ(b.boxes.size(), 1);
        EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("记录没有输入"))) << qPrintable(b.boxes.first());
        EXPECT_TRUE(b.text(rows - 1, "Explain").isEmpty()) << "the valid key was not written either";
        EXPECT_EQ(b.grid->rows(), rows);
    }
    EXPECT_FALSE(b.journal->IsDirty());
    EXPECT_FALSE(b.journal->canUndo());

    // A closed row is no row to enter into.
    ASSERT_TRUE(b.journal->InsSumRow(3));
    b.boxes.clear();
    EXPECT_FALSE(b.journal->enterRecord(fields({{"Explain", "改"}}), 2));
    EXPECT_EQ(b.text(2, "Explain"), QStringLiteral("收到货款"));
    ASSERT_EQ(b.boxes.size(), 1);
    EXPECT_TRUE(b.journal->enterableKeys().contains(QStringLiteral("Explain")));
    EXPECT_FALSE(b.journal->enterableKeys().contains(QStringLiteral("AccDoc")));
}

TEST(HostApi, ALineLaidOutForOtherColumnsIsNotPastedAtAll)
{
    EditingBook b;
    // Date, account, explanation, amount: but 单据号 stands second and the
    // voucher column fourth.
    b.grid->setCursor(5, b.col("ShowName"));
    b.boxes.clear();
    EXPECT_FALSE(b.journal->pasteText(QStringLiteral("2025-01-20\t应收账款\t收回\t100")));
    EXPECT_TRUE(b.text(5, "JnlNo").isEmpty()) << "the account name did not land in 单据号";
    EXPECT_TRUE(b.text(5, "ShowName").isEmpty());
    EXPECT_FALSE(b.journal->IsDirty());
    ASSERT_EQ(b.boxes.size(), 1);
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("记账凭证"))) << qPrintable(b.boxes.first());
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("“100”"))) << qPrintable(b.boxes.first());

    // A field past the last column is as lost.
    b.grid->setCursor(5, b.col("Remark"));
    b.boxes.clear();
    EXPECT_FALSE(b.journal->pasteText(QStringLiteral("甲\t乙\t丙\t丁\t戊\t己\t庚\t辛\t壬\t癸\t子\t丑\t寅")));
    ASSERT_EQ(b.boxes.size(), 1);
    EXPECT_TRUE(b.boxes.first().contains(QStringLiteral("最后一栏之后"))) << qPrintable(b.boxes.first());

    // A whole row copied and pasted under the book lands column for column;
    // its balance is worked out again.
    b.grid->select(2, b.col("ShowName"), 2, b.grid->cols() - 1);
    const QString copied = b.journal->copyText();
    b.grid->setCursor(5, b.col("ShowName"));
    ASSERT_TRUE(b.journal->pasteText(copied)) << qPrintable(b.said.join(QLatin1Char('\n')));
    EXPECT_EQ(b.text(5, "Explain"), QStringLiteral("收到货款"));
    EXPECT_EQ(b.grid->amount(5, b.col("Balance")), kx::Currency::fromRaw(17500000));
}

TEST(HostApi, ColumnsShownAndSizedByKeyTravelInTheBagAndSurviveALoad)
{
    EditingBook b;
    b.journal->resize(900, 400);
    EXPECT_TRUE(b.journal->isColumnVisible(QStringLiteral("Explain")));
    EXPECT_FALSE(b.journal->isColumnVisible(QStringLiteral("Remark")));
    EXPECT_FALSE(b.journal->isColumnVisible(QStringLiteral("NoSuchKey")));
    EXPECT_EQ(b.journal->columnWidth(QStringLiteral("NoSuchKey")), -1);

    QStringList changed;
    QObject::connect(b.journal.get(), &kx::Journal::propertyChanged, [&](const QString &n) { changed << n; });
    EXPECT_TRUE(b.journal->setColumnVisible(QStringLiteral("Remark"), true));
    EXPECT_TRUE(b.journal->setColumnVisible(QStringLiteral("JnlNo"), false));
    EXPECT_FALSE(b.journal->setColumnVisible(QStringLiteral("JnlNo"), false)) << "already hidden";
    EXPECT_FALSE(b.journal->setColumnVisible(QStringLiteral("RecID"), true)) << "kept from the user";
    EXPECT_TRUE(b.journal->setColumnWidth(QStringLiteral("AccName"), 211));
    EXPECT_FALSE(b.journal->setColumnWidth(QStringLiteral("AccName"), 0));
    EXPECT_FALSE(b.journal->setColumnWidth(QStringLiteral("NoSuchKey"), 50));
    EXPECT_EQ(changed, (QStringList{QStringLiteral("FieldShow"), QStringLiteral("FieldShow"), QStringLiteral("ColumnWidths")}));
    EXPECT_TRUE(b.journal->gridView()->isColumnHidden(b.col("JnlNo") - 1)) << "the view follows";
    EXPECT_FALSE(b.journal->gridView()->isColumnHidden(b.col("Remark") - 1));
    EXPECT_EQ(b.journal->gridView()->horizontalHeader()->sectionSize(b.col("AccName") - 1), 211);

    ASSERT_TRUE(b.journal->Load(b.book));
    EXPECT_FALSE(b.journal->isColumnVisible(QStringLiteral("JnlNo")));
    EXPECT_TRUE(b.journal->isColumnVisible(QStringLiteral("Remark")));
    EXPECT_EQ(b.journal->columnWidth(QStringLiteral("AccName")), 211);

    // The same path as a drag: the bag holds it, another control takes it.
    kx::PropertyBag bag;
    b.journal->WriteProperties(bag);
    kx::Journal other;
    other.setAcc(b.acc.get());
    other.ReadProperties(bag);
    ASSERT_TRUE(other.Load(b.book));
    EXPECT_FALSE(other.isColumnVisible(QStringLiteral("JnlNo")));
    EXPECT_TRUE(other.isColumnVisible(QStringLiteral("Remark")));
    EXPECT_EQ(other.columnWidth(QStringLiteral("AccName")), 211);
}

TEST(HostApi, SettingsHoldReadableValuesOnlyWhereTheyDifferFromTheDefaults)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("host.ini"));
    {
        kx::Journal journal;
        journal.setBackColor(QColor(0x10, 0x20, 0x30));
        journal.setWarnBackColor(QColor(255, 0, 0, 128));
        journal.setRowHeightMax(40);
        journal.setColumnVisible(QStringLiteral("Remark"), true);
        QSettings settings(path, QSettings::IniFormat);
        kx::SettingsPropertyBag(settings, QStringLiteral("journal")).saveJournal(journal);

        // Plain values too: a font and a switch read back as themselves.
        kx::PropertyBag extra;
        QFont font(QStringLiteral("Noto Sans CJK SC"), 11);
        font.setBold(true);
        extra.write(QStringLiteral("Font"), font);
        extra.write(QStringLiteral("Packed"), true);
        extra.write(QStringLiteral("Ratio"), 1.5);
        kx::SettingsPropertyBag(settings, QStringLiteral("extra")).save(extra);
        settings.sync();
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString ini = QString::fromUtf8(file.readAll());
    EXPECT_FALSE(ini.contains(QStringLiteral("@Variant"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QStringLiteral("BackColor=#102030"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QStringLiteral("WarnBackColor=#80ff0000"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QStringLiteral("RowHeightMax=40"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QStringLiteral("Remark=1"))) << qPrintable(ini);
    EXPECT_FALSE(ini.contains(QStringLiteral("GridColor="))) << "a default has no line";
    EXPECT_FALSE(ini.contains(QStringLiteral("RowHeightMin="))) << "a default has no line";
    EXPECT_TRUE(ini.contains(QStringLiteral("Packed=true"))) << qPrintable(ini);
    EXPECT_TRUE(ini.contains(QStringLiteral("Ratio=1.5"))) << qPrintable(ini);

    QSettings settings(path, QSettings::IniFormat);
    kx::Journal back;
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).loadJournal(back);
    EXPECT_EQ(back.BackColor(), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(back.WarnBackColor(), QColor(255, 0, 0, 128));
    EXPECT_EQ(back.RowHeightMax(), 40);

    kx::PropertyBag types;
    types.write(QStringLiteral("Font"), QFont());
    types.write(QStringLiteral("Packed"), false);
    types.write(QStringLiteral("Ratio"), 0.0);
    const kx::PropertyBag extra = kx::SettingsPropertyBag(settings, QStringLiteral("extra")).load(types);
    const QFont font = extra.read(QStringLiteral("Font"), QVariant()).value<QFont>();
    EXPECT_EQ(font.family(), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_EQ(font.pointSize(), 11);
    EXPECT_TRUE(font.bold());
    EXPECT_EQ(extra.read(QStringLiteral("Packed"), QVariant()).typeId(), QMetaType::Bool);
    EXPECT_TRUE(extra.read(QStringLiteral("Packed"), false).toBool());
    EXPECT_EQ(extra.read(QStringLiteral("Ratio"), 0.0).toDouble(), 1.5);

    // Set back to its default, a value leaves the file.
    back.setRowHeightMax(kx::Journal().RowHeightMax());
    kx::SettingsPropertyBag(settings, QStringLiteral("journal")).saveJournal(back);
    settings.sync();
    file.close();
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(QString::fromUtf8(file.readAll()).contains(QStringLiteral("RowHeightMax=")));
}

TEST(HostApi, EnumsStandBesideTheIntsAndTextsAndMessagesSayTheirKind)
{
    EditingBook b;
    ASSERT_EQ(b.journal->Direction(), QStringLiteral("借"));
    EXPECT_EQ(b.journal->balanceDirection(), kx::Journal::DebitDirection);
    b.journal->setBalanceDirection(kx::Journal::CreditDirection);
    EXPECT_EQ(b.journal->Direction(), QStringLiteral("贷"));
    b.journal->setDirection(QString());
    EXPECT_EQ(b.journal->balanceDirection(), kx::Journal::NoDirection);

    QTemporaryDir dir;
    const QString tsv = dir.filePath(QStringLiteral("book.csv"));
    ASSERT_TRUE(b.journal->ExportToFile(tsv, kx::Journal::ExportTab));
    QFile file(tsv);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(QLatin1Char('\t'))) << "tab-separated whatever the extension";

    QList<QPair<QString, kx::Journal::MessageKind>> messages;
    QObject::connect(b.journal.get(), &kx::Journal::message,
                     [&](const QString &text, kx::Journal::MessageKind kind) { messages.append({text, kind}); });
    const int notified = b.said.size();
    ASSERT_TRUE(b.journal->Load(b.book));
    ASSERT_GE(messages.size(), 2);
    EXPECT_EQ(messages.size(), b.said.size() - notified) << "one message beside every Notify";
    EXPECT_EQ(messages.first().second, kx::Journal::ProgressMessage) << qPrintable(messages.first().first);
    EXPECT_EQ(messages.last().second, kx::Journal::InformationMessage) << qPrintable(messages.last().first);

    messages.clear();
    EXPECT_FALSE(b.journal->Load(987654));
    ASSERT_FALSE(messages.isEmpty());
    EXPECT_EQ(messages.last().second, kx::Journal::ErrorMessage) << qPrintable(messages.last().first);

    messages.clear();
    b.journal->Prompt(QStringLiteral("请注意"), true);
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages.first().second, kx::Journal::WarningMessage);
}

// A database without journal tables (a wrong file, a schema not made yet)
// is a book that cannot be read: the control says so and the host runs on.
TEST(HostApi, ADatabaseWithoutBooksIsRefusedNotFatal)
{
    kx::SqlAccContext acc(kx::Database::open(QStringLiteral("sqlite::memory:")));
    kx::Journal journal;
    QStringList said;
    QObject::connect(&journal, &kx::Journal::Notify, [&](const QString &m, bool) { said << m; });
    journal.setAcc(&acc);
    journal.setDocID(1);
    EXPECT_FALSE(journal.Load());
    EXPECT_FALSE(said.isEmpty()) << "the failed load is reported";
    const kx::Result<kx::BookDirectory> books = kx::BookDirectory::read(acc.Connection());
    EXPECT_FALSE(books.ok());
}
