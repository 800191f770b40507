#include "QtPrinters.h"
#include "data/SqlAccess.h"
#include "support/TestDatabase.h"

#include <kxjournal/GridView.h>
#include "grid/Sheet.h"
#include <kxjournal/Journal.h>
#include <kxjournal/Schema.h>
#include <kxjournal/SqlAccContext.h>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFrame>
#include <QMenu>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using kx::Journal;

namespace {

// A grid laid out like a loaded journal: keyed columns and three rows.
void layOut(Journal &j)
{
    kx::Sheet *g = kx::Sheet::of(j.Grid());
    const QStringList keys{QString(), QStringLiteral("ShowName"), QStringLiteral("JnlDate"), QStringLiteral("Explain"),
                           QStringLiteral("Debit"), QStringLiteral("AccID")};
    g->setCols(int(keys.size()));
    for (int c = 0; c < keys.size(); ++c) {
        g->setColKey(c, keys.at(c));
        g->setText(0, c, keys.at(c));
    }
    g->addItem(QStringLiteral("\t2026年期初\t2026-01-01\t期初余额\t\t0"));
    g->addItem(QStringLiteral("\t2026年01月小结\t2026-01-31\t小结\t\t0"));
    g->addItem(QStringLiteral("\t\t\t\t\t"));
}

// A bag that remembers the order in which keys are read.
class RecordingBag : public kx::PropertyBag
{
public:
    QVariant read(const QString &name, const QVariant &defaultValue) const override
    {
        reads << name;
        return kx::PropertyBag::read(name, defaultValue);
    }
    mutable QStringList reads;
};

} // namespace

TEST(Journal, MetaObjectCarriesTheWholeThinInterface)
{
    const QMetaObject &mo = Journal::staticMetaObject;
    struct Prop { const char *name; bool writable; };
    const Prop props[] = {
        {"Message", true}, {"Acc", true}, {"Caption", true}, {"FmtName", false}, {"FmtFlag", false},
        {"fmtID", false}, {"IsPackedJnl", true}, {"IsBottomClass", false}, {"AccCode", false}, {"AccName", false},
        {"RelativeAccID", true}, {"RelativeAccCode", false}, {"RelativeAccName", false}, {"Direction", true},
        {"ObjName", false}, {"LastSumRow", true}, {"Grid", false}, {"AllowAccDoc", false}, {"BorderColor", true},
        {"BackColor", true}, {"BackColorFixed", true}, {"BackColorBkg", true}, {"GridColor", true},
        {"GridColorFixed", true}, {"HotBackColor", true}, {"WarnBackColor", true}, {"LockedForeColor", true},
        {"ModifiedForeColor", true}, {"ColsFilter", true}, {"OutlineKey", true}, {"ListFields", true},
        {"NumericFields", true}, {"EditFields", true}, {"DateFields", true}, {"Font", true}, {"RowHeightMax", true},
        {"RowHeightMin", true}, {"Row", true}, {"PriceFormat", true}, {"RateFormat", true}, {"QuantityFormat", true},
        {"AccountFormat", true}, {"DateFormat", true}, {"AllowModify", true}, {"AllowAudit", false}, {"Rows", false},
        {"IsDirty", true}, {"IsLastSumRow", false}, {"DocID", true}, {"JnlDate", true}, {"Statistics", false},
    };
    for (const Prop &p : props) {
        const int i = mo.indexOfProperty(p.name);
        ASSERT_GE(i, 0) << "missing property " << p.name;
        EXPECT_EQ(mo.property(i).isWritable(), p.writable) << p.name;
    }
    // Bindings (QML, property browsers) learn of changes made by loading,
    // saving or moving the cursor, not only of their own writes.
    for (const char *name : {"Caption", "IsPackedJnl", "AccName", "Direction", "LastSumRow", "Rows", "IsDirty",
                             "DocID", "Row", "Statistics"})
        EXPECT_TRUE(mo.property(mo.indexOfProperty(name)).hasNotifySignal()) << name;
    for (const char *m : {"AccID(int)", "setAccID(int,int)", "Initial()", "Get_AccCodeField(QString,int)",
                          "Prompt(QString,bool)", "DoCommand(QString,QString)", "Load(int)", "Save()",
                          "InsSumRow(int)", "RemoveSumRow(int)", "SetDefaultFormat()", "DirID(int)",
                          "setDirID(int,int)", "SetDirID(int)", "Make()"}) {
        const int i = mo.indexOfMethod(QMetaObject::normalizedSignature(m));
        ASSERT_GE(i, 0) << "missing method " << m;
        EXPECT_EQ(mo.method(i).methodType(), QMetaMethod::Method) << m;
    }
    const char *events[] = {"DataChanged(QString)", "MouseDown(int&,int&,float&,float&)", "MouseUp(int&,int&,float&,float&)",
                            "MouseMove(int&,int&,float&,float&)", "AfterRowChanged()", "AfterColChanged()",
                            "AfterLoaded()", "AfterSaved()", "CommandExecute(QString,bool&)", "AfterCommand(QString)",
                            "Notify(QString,bool)", "Process(int)", "AfterMaked(QString)", "AfterExport(QString)",
                            "IconClick()", "FindMsg(QString)"};
    int previous = -1;
    for (const char *e : events) {
        const int i = mo.indexOfSignal(QMetaObject::normalizedSignature(e));
        ASSERT_GE(i, 0) << "missing event " << e;
        EXPECT_GT(i, previous) << e << " is out of order";
        previous = i;
    }
    const QMetaMethod notify = mo.method(mo.indexOfSignal("Notify(QString,bool)"));
    EXPECT_EQ(notify.parameterNames(), (QList<QByteArray>{"rMsg", "ShowBox"}));
    const QMetaMethod command = mo.method(mo.indexOfSignal("CommandExecute(QString,bool&)"));
    EXPECT_EQ(command.parameterNames(), (QList<QByteArray>{"CommandName", "Cancel"}));
}

TEST(Journal, PersistedLooksRoundTripInTheirOrder)
{
    Journal first;
    QSignalSpy changed(&first, &Journal::propertyChanged);
    first.setBorderColor(QColor(1, 2, 3));
    first.setBackColor(QColor(10, 20, 30));
    first.setGridColor(QColor(200, 0, 0));
    first.setHotBackColor(QColor(255, 255, 200));
    first.setLockedForeColor(Qt::gray);
    first.setRowHeightMax(60);
    first.setRowHeightMin(18);
    first.setPriceFormat(QStringLiteral("0.00"));
    first.setModifiedForeColor(Qt::blue);
    first.setColsFilter(QStringLiteral("|Debit|"));
    QStringList names;
    for (const auto &args : changed)
        names << args.at(0).toString();
    EXPECT_EQ(names, (QStringList{QStringLiteral("BorderColor"), QStringLiteral("BackColor"), QStringLiteral("GridColor"),
                                  QStringLiteral("HotBackColor"), QStringLiteral("LockedForeColor"),
                                  QStringLiteral("RowHeightMax"), QStringLiteral("RowHeightMin"),
                                  QStringLiteral("PriceFormat"), QStringLiteral("ModifiedForeColor")}));

    RecordingBag bag;
    first.WriteProperties(bag);
    EXPECT_EQ(bag.names(), (QStringList{QStringLiteral("BorderColor"), QStringLiteral("BackColor"),
                                        QStringLiteral("BackColorFixed"), QStringLiteral("HotBackColor"),
                                        QStringLiteral("WarnBackColor"), QStringLiteral("LockedForeColor"),
                                        QStringLiteral("BackColorBkg"), QStringLiteral("GridColor"),
                                        QStringLiteral("GridColorFixed"), QStringLiteral("RowHeightMax"),
                                        QStringLiteral("RowHeightMin"), QStringLiteral("QuickFill"), QStringLiteral("AutoNumber"),
                                        QStringLiteral("VoucherGrouping"),
                                        QStringLiteral("FieldShow"),
                                        QStringLiteral("ColumnWidths"), QStringLiteral("LayoutSizes")}));

    Journal second;
    const QColor gridLinesBefore = second.GridColor();
    bag.remove(QStringLiteral("GridColor"));
    second.ReadProperties(bag);
    EXPECT_EQ(bag.reads, (QStringList{QStringLiteral("BorderColor"), QStringLiteral("RowHeightMax"),
                                      QStringLiteral("RowHeightMin"), QStringLiteral("BackColor"),
                                      QStringLiteral("BackColorFixed"), QStringLiteral("HotBackColor"),
                                      QStringLiteral("WarnBackColor"), QStringLiteral("BackColorBkg"),
                                      QStringLiteral("GridColor"), QStringLiteral("GridColorFixed"),
                                      QStringLiteral("LockedForeColor"), QStringLiteral("QuickFill"), QStringLiteral("AutoNumber"),
                                        QStringLiteral("VoucherGrouping"),
                                        QStringLiteral("FieldShow"),
                                      QStringLiteral("ColumnWidths"), QStringLiteral("LayoutSizes")}));
    EXPECT_EQ(second.BorderColor(), QColor(1, 2, 3));
    EXPECT_EQ(second.BackColor(), QColor(10, 20, 30));
    EXPECT_EQ(second.HotBackColor(), QColor(255, 255, 200));
    EXPECT_EQ(second.LockedForeColor(), QColor(Qt::gray));
    EXPECT_EQ(second.RowHeightMax(), 60);
    EXPECT_EQ(second.RowHeightMin(), 18);
    EXPECT_EQ(second.GridColor(), gridLinesBefore) << "a missing key leaves the grid's own colour";
    EXPECT_EQ(second.PriceFormat(), QString()) << "formats live only as long as the control";
    EXPECT_NE(second.ModifiedForeColor(), first.ModifiedForeColor()) << "not persisted";

    // Hosts that kept OLE colours (0x00BBGGRR) get them back as colours.
    kx::PropertyBag ole;
    ole.write(QStringLiteral("BackColorFixed"), 0x00FF8000u);
    second.ReadProperties(ole);
    EXPECT_EQ(second.BackColorFixed(), QColor(0x00, 0x80, 0xFF));
}

TEST(Journal, CommandsMatchExactlyAndUnknownOnesDoNothing)
{
    Journal j;
    layOut(j);
    QAction *side = j.menuAction(QStringLiteral("mnuSideTask"));
    ASSERT_NE(side, nullptr);
    QSignalSpy icon(&j, &Journal::IconClick);
    int commands = 0;
    QObject::connect(&j, &Journal::CommandExecute, [&](const QString &, bool &) { ++commands; });

    j.DoCommand(QStringLiteral("sidevisible"), QStringLiteral("True"));
    EXPECT_FALSE(side->isChecked());
    j.DoCommand(QStringLiteral("SideVisible"), QStringLiteral("True"));
    EXPECT_TRUE(side->isChecked());
    EXPECT_TRUE(j.findChild<QFrame *>(QStringLiteral("C1EDesk"))->isVisibleTo(&j));
    j.DoCommand(QStringLiteral("SideVisible"), QStringLiteral("true"));
    EXPECT_FALSE(side->isChecked()) << "only the exact text True checks it";

    QApplication::clipboard()->setText(QStringLiteral("before"));
    j.Grid()->select(1, 3, 2, 4);
    j.DoCommand(QStringLiteral("copy"));
    j.DoCommand(QStringLiteral("Find"));
    j.DoCommand(QStringLiteral("NoSuchCommand"), QStringLiteral("x"));
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("before"));
    j.DoCommand(QStringLiteral("Copy"));
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("期初余额\t\r\n小结\t\r\n"));
    EXPECT_EQ(commands, 0);
    EXPECT_EQ(icon.count(), 0) << "DoCommand raises nothing itself";
    side->trigger();
    EXPECT_EQ(icon.count(), 1);
}

TEST(Journal, StoredValuesAndTheirRules)
{
    Journal j;
    EXPECT_EQ(j.FmtName(), QStringLiteral("流水账"));
    EXPECT_EQ(j.ObjName(), QStringLiteral("JournalRec"));
    EXPECT_EQ(j.Rows(), 0) << "an empty book has only its header row";

    j.setDirection(QStringLiteral("贷"));
    EXPECT_EQ(j.Direction(), QStringLiteral("贷"));
    for (const char *bad : {"借贷", "X", "借 "}) {
        j.setDirection(QStringLiteral("借"));
        j.setDirection(QString::fromUtf8(bad));
        EXPECT_EQ(j.Direction(), QString()) << bad;
    }

    j.setAllowModify(true);
    EXPECT_FALSE(j.AllowModify()) << "no book yet";
    j.setDocID(5);
    j.setAllowModify(true);
    EXPECT_TRUE(j.AllowModify());
    EXPECT_EQ(j.FmtFlag(), QStringLiteral("5"));
    EXPECT_EQ(j.fmtID(), 5);
    j.setDocID(0);
    j.setAllowModify(true);
    EXPECT_FALSE(j.AllowModify());

    j.setCaption(QStringLiteral("银行日记账"));
    EXPECT_EQ(j.Caption(), QStringLiteral("银行日记账"));
    QSignalSpy notify(&j, &Journal::Notify);
    j.Prompt(QStringLiteral("已读入"), true);
    ASSERT_EQ(notify.count(), 1);
    EXPECT_EQ(notify.at(0).at(0).toString(), QStringLiteral("已读入"));
    EXPECT_TRUE(notify.at(0).at(1).toBool());

    j.setIsPackedJnl(true);
    EXPECT_TRUE(j.menuAction(QStringLiteral("mnuPackJnl"))->isChecked());
    j.menuAction(QStringLiteral("mnuPackJnl"))->trigger();
    EXPECT_FALSE(j.IsPackedJnl());

    bool asked = false;
    j.setAsker([&](const QString &text, const QString &) { asked = text == QStringLiteral("删除吗？"); return true; });
    EXPECT_TRUE(j.ask(QStringLiteral("删除吗？")));
    EXPECT_TRUE(asked);
}

TEST(Journal, GridBackedPropertiesReadTheCurrentRow)
{
    Journal j;
    layOut(j);
    kx::Sheet *g = kx::Sheet::of(j.Grid());
    EXPECT_EQ(j.Rows(), 3);

    g->setCursor(2, g->colIndex(QStringLiteral("Debit")));
    QSignalSpy changed(&j, &Journal::DataChanged);
    j.setIsDirty(false);
    EXPECT_EQ(changed.count(), 0);
    j.setIsDirty(true);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toString(), QStringLiteral("Debit"));

    EXPECT_FALSE(j.AllowAccDoc());
    j.setAccID(1002);
    EXPECT_EQ(j.AccID(), 1002);
    EXPECT_EQ(j.AccID(1), 0);
    EXPECT_TRUE(j.AllowAccDoc());
    j.setAccID(7, 3);
    EXPECT_EQ(g->text(3, QStringLiteral("AccID")), QStringLiteral("7"));

    // The last summary row, with no dated row after it.
    j.setLastSumRow(2);
    EXPECT_TRUE(j.IsLastSumRow());
    g->setText(3, QStringLiteral("JnlDate"), QStringLiteral("2026-02-01"));
    EXPECT_FALSE(j.IsLastSumRow());
    j.setLastSumRow(3);
    g->setCursor(3, 1);
    EXPECT_FALSE(j.IsLastSumRow()) << "the last grid row has no next row";

    g->setCursor(3, 1);
    j.setJnlDate(QDate(2026, 2, 3));
    EXPECT_EQ(g->text(3, QStringLiteral("JnlDate")), QStringLiteral("2026-02-03"));
    EXPECT_EQ(g->text(3, QStringLiteral("ShowName")), QStringLiteral("2026年02月03日"));
    EXPECT_EQ(j.JnlDate(), QDate(2026, 2, 3));
    g->setSubtotal(3, true);
    j.setJnlDate(QDate(2026, 2, 28));
    EXPECT_EQ(g->text(3, QStringLiteral("ShowName")), QStringLiteral("2026年02月"));

    g->setRowHidden(2, true);
    j.setRow(2);
    EXPECT_EQ(j.Row(), 2);
    EXPECT_FALSE(g->isRowHidden(2)) << "moving to a hidden row shows it";

    QFont f(QStringLiteral("Noto Sans CJK SC"), 13);
    j.setFont(f);
    EXPECT_EQ(j.Font().pointSize(), 13);
    for (int r = 0; r < g->rows(); ++r)
        for (int c = 0; c < g->cols(); ++c)
            ASSERT_EQ(g->cellFontName(r, c), f.family()) << r << "," << c;
}

TEST(Journal, CursorAndMouseEventsReachTheHost)
{
    Journal j;
    layOut(j);
    j.resize(800, 400);
    j.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&j));
    QSignalSpy rowChanged(&j, &Journal::AfterRowChanged);
    QSignalSpy colChanged(&j, &Journal::AfterColChanged);
    j.Grid()->setCursor(2, 1);
    j.Grid()->setCursor(2, 3);
    j.Grid()->setCursor(3, 3);
    EXPECT_EQ(rowChanged.count(), 2);
    EXPECT_EQ(colChanged.count(), 1);

    int button = 0, shift = 0;
    QObject::connect(&j, &Journal::MouseUp, [&](int &b, int &s, float &, float &) {
        button = b;
        shift = s;
    });
    kx::GridView *view = j.gridView();
    const QRect cell = view->visualRect(j.Grid()->indexAt(1, 3));
    QTest::mouseClick(view->viewport(), Qt::RightButton, Qt::ControlModifier, cell.center());
    EXPECT_EQ(button, 2);
    EXPECT_EQ(shift, 2);
}

TEST(Journal, AccountFieldsComeFromTheContext)
{
    kxtest::TestDatabase testDb(kxtest::Engine::Sqlite);
    kx::Database db = testDb.open();
    ASSERT_TRUE(kx::Schema::create(db).ok());
    ASSERT_TRUE(kx::sqlRun(db, {QStringLiteral("INSERT INTO kxAccClass (AccID, AccCode, AccName, EnterCode) "
                                               "VALUES (1002,'1002','银行存款','yhck')"),
                                {}})
                    .ok());
    kx::SqlAccContext acc(std::move(db));
    Journal j;
    EXPECT_EQ(j.Get_AccCodeField(QStringLiteral("AccName"), 1002), QString()) << "no context yet";
    j.setAcc(&acc);
    EXPECT_EQ(j.Get_AccCodeField(QStringLiteral("AccName"), 1002), QStringLiteral("银行存款"));
    EXPECT_EQ(j.Get_AccCodeField(QStringLiteral("EnterCode"), 1002), QStringLiteral("yhck"));
    EXPECT_EQ(j.Get_AccCodeField(QStringLiteral("NoSuchField"), 1002), QString());
    EXPECT_EQ(j.Get_AccCodeField(QStringLiteral("AccName"), 9), QString());
    layOut(j);
    j.setAccID(1002, 1);
    EXPECT_EQ(j.AccCode(), QStringLiteral("1002"));
    EXPECT_EQ(j.AccName(), QStringLiteral("银行存款"));
    j.setRelativeAccID(77);
    EXPECT_EQ(j.RelativeAccName(), QString());

    QSignalSpy notify(&j, &Journal::Notify);
    Q_EMIT acc.Announce(QStringLiteral("期间已结账"));
    ASSERT_EQ(notify.count(), 1);
    EXPECT_EQ(notify.at(0).at(0).toString(), QStringLiteral("期间已结账"));
}
