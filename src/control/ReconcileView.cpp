#include "control/ReconcileView.h"
#include "control/SideView.h"

#include "control/JournalPrivate.h"
#include "editing/EditSession.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Journal.h"
#include "ledger/LedgerStep.h"
#include "bank/StatementReader.h"
#include "kxjournal/Database.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kx {

namespace {

QString figure(Currency amount)
{
    return amount.format(QStringLiteral("#,##0.00"));
}

QTableWidget *table(const QStringList &headers, const QString &name)
{
    auto *t = new QTableWidget(0, int(headers.size()));
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(headers);
    t->setSelectionBehavior(QAbstractItemView::SelectRows);
    t->setSelectionMode(QAbstractItemView::ExtendedSelection);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->verticalHeader()->hide();
    t->verticalHeader()->setDefaultSectionSize(22);
    t->horizontalHeader()->setStretchLastSection(true);
    return t;
}

void put(QTableWidget *t, int row, int col, const QString &text, Qt::Alignment align = Qt::AlignLeft)
{
    auto *item = new QTableWidgetItem(text);
    item->setTextAlignment(align | Qt::AlignVCenter);
    t->setItem(row, col, item);
}

} // namespace

ReconcileView::ReconcileView(JournalPrivate &journal, AccContext &acc, QWidget *parent)
    : QDialog(parent), d(journal), m_acc(&acc),
      m_session(std::make_unique<ReconcileSession>(journal.book, acc.Connection(), acc.UserName()))
{
    setObjectName(QStringLiteral("reconcileView"));
    setWindowTitle(QStringLiteral("银行对账 - %1").arg(journal.state.book.journalName));
    m_month = new QComboBox;
    m_month->setObjectName(QStringLiteral("reconcileMonth"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(new QLabel(QStringLiteral("月份：")));
    buttons->addWidget(m_month);
    auto *import = new QPushButton(QStringLiteral("导入对账单..."));
    import->setAutoDefault(false);
    connect(import, &QPushButton::clicked, this, [this] {
        const QString path = chooseFile ? chooseFile() : QString();
        if (!path.isEmpty())
            importFile(path);
    });
    buttons->addWidget(import);
    chooseFile = [this] {
        return QFileDialog::getOpenFileName(this, QStringLiteral("导入银行对账单"), QString(),
                                            QStringLiteral("银行对账单 (*.csv *.txt *.xlsx *.xls *.ofx *.qfx *.xml);;所有文件 (*)"));
    };
    const QList<std::pair<QString, void (ReconcileView::*)()>> actions{
        {QStringLiteral("自动勾对"), &ReconcileView::autoMatch},   {QStringLiteral("勾对"), &ReconcileView::matchSelected},
        {QStringLiteral("取消勾对"), &ReconcileView::unmatchSelected}, {QStringLiteral("撤销"), &ReconcileView::undo},
        {QStringLiteral("生成记录"), &ReconcileView::recordFromSelected}};
    for (const auto &[text, slot] : actions) {
        auto *b = new QPushButton(text);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, slot);
        buttons->addWidget(b);
    }
    buttons->addStretch();
    m_lines = table({QStringLiteral("勾对"), QStringLiteral("日期"), QStringLiteral("收付"), QStringLiteral("金额"),
                     QStringLiteral("流水号"), QStringLiteral("对方户名"), QStringLiteral("摘要")},
                    QStringLiteral("statementLines"));
    m_records = table({QStringLiteral("勾对"), QStringLiteral("日期"), QStringLiteral("单据号"), QStringLiteral("收付"),
                       QStringLiteral("金额"), QStringLiteral("摘要")},
                      QStringLiteral("journalRecords"));
    auto *split = new QSplitter;
    auto side = [](const QString &caption, QTableWidget *t) {
        auto *w = new QWidget;
        auto *l = new QVBoxLayout(w);
        l->setContentsMargins(0, 0, 0, 0);
        l->addWidget(new QLabel(caption));
        l->addWidget(t);
        return w;
    };
    split->addWidget(side(QStringLiteral("银行对账单"), m_lines));
    split->addWidget(side(QStringLiteral("银行存款日记账"), m_records));
    m_status = new QLabel;
    m_status->setObjectName(QStringLiteral("reconcileStatus"));
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(split, 1);
    layout->addWidget(m_status);
    resize(1100, 560);

    for (const auto &[keys, slot] : QList<std::pair<QKeySequence, void (ReconcileView::*)()>>{
             {QKeySequence(Qt::Key_Return), &ReconcileView::matchSelected},
             {QKeySequence(Qt::Key_Enter), &ReconcileView::matchSelected},
             {QKeySequence(Qt::Key_Delete), &ReconcileView::unmatchSelected},
             {QKeySequence::Undo, &ReconcileView::undo}}) {
        auto *shortcut = new QShortcut(keys, this);
        connect(shortcut, &QShortcut::activated, this, slot);
    }
    connect(m_month, &QComboBox::currentIndexChanged, this, [this] { showMonth(m_month->currentData().toDate()); });
}

ReconcileView::~ReconcileView() = default;

ReconcileView *ReconcileView::open(JournalPrivate &d)
{
    return openSideView<ReconcileView>(
        d, QStringLiteral("Reconcile"),
        [&d](AccContext &acc) {
            auto *view = new ReconcileView(d, acc, d.q);
            view->reload();
            return view;
        },
        [](ReconcileView *shown) {
            shown->reload();
            return true;
        });
}

bool ReconcileView::contextGone()
{
    if (m_acc)
        return false;
    say(QStringLiteral("没有连接到账套。"), true);
    return true;
}

void ReconcileView::say(const QString &text, bool problem)
{
    m_status->setText(text);
    m_status->setStyleSheet(problem ? QStringLiteral("color: #b00020") : QString());
}

bool ReconcileView::reload()
{
    if (contextGone())
        return false;
    const Result<void> read = m_session->read();
    if (!read.ok()) {
        say(read.error(), true);
        return false;
    }
    // The months the statement or the records fall in, newest first; the
    // view opens at the statement's last month.
    QList<QDate> months;
    QDate latest;
    m_session->setMonth(QDate());
    for (const StoredLine &l : m_session->monthLines()) {
        months << QDate(l.line.date.year(), l.line.date.month(), 1);
        latest = std::max(latest, months.last());
    }
    for (const BankRecord &r : m_session->monthRecords())
        months << QDate(r.date.year(), r.date.month(), 1);
    std::sort(months.begin(), months.end(), std::greater<QDate>());
    months.erase(std::unique(months.begin(), months.end()), months.end());
    const QSignalBlocker quiet(m_month);
    m_month->clear();
    for (const QDate &m : months)
        m_month->addItem(m.toString(QStringLiteral("yyyy-MM")), m);
    m_month->addItem(QStringLiteral("全部"), QDate());
    showMonth(latest.isValid() ? latest : months.isEmpty() ? QDate() : months.first());
    return true;
}

void ReconcileView::showMonth(const QDate &day)
{
    m_session->setMonth(day);
    const int at = m_month->findData(m_session->month());
    if (at >= 0 && at != m_month->currentIndex()) {
        const QSignalBlocker quiet(m_month);
        m_month->setCurrentIndex(at);
    }
    fill();
}

void ReconcileView::fill()
{
    const QList<StoredLine> lines = m_session->monthLines();
    const QList<BankRecord> records = m_session->monthRecords();
    const QString tick = QStringLiteral("✓");
    int bankOpenCount = 0, bookOpenCount = 0;
    Currency bankOpen, bookOpen;
    m_lines->setRowCount(int(lines.size()));
    for (int i = 0; i < int(lines.size()); ++i) {
        const StatementLine &l = lines.at(i).line;
        const bool ticked = m_session->isLineMatched(lines.at(i).id);
        put(m_lines, i, 0, ticked ? tick : QString(), Qt::AlignCenter);
        m_lines->item(i, 0)->setData(Qt::UserRole, lines.at(i).id);
        put(m_lines, i, 1, l.date.toString(Qt::ISODate));
        put(m_lines, i, 2, StatementStore::sideText(l.side), Qt::AlignCenter);
        put(m_lines, i, 3, figure(l.amount), Qt::AlignRight);
        put(m_lines, i, 4, l.reference);
        put(m_lines, i, 5, l.counterparty);
        put(m_lines, i, 6, l.memo);
        if (!ticked) {
            ++bankOpenCount;
            bankOpen = l.side == StatementSide::Receipt ? bankOpen + l.amount : bankOpen - l.amount;
        }
    }
    m_records->setRowCount(int(records.size()));
    for (int i = 0; i < int(records.size()); ++i) {
        const BankRecord &r = records.at(i);
        const bool ticked = m_session->isMatched(r.recId);
        put(m_records, i, 0, ticked ? tick : QString(), Qt::AlignCenter);
        m_records->item(i, 0)->setData(Qt::UserRole, r.recId);
        put(m_records, i, 1, r.date.toString(Qt::ISODate));
        put(m_records, i, 2, r.number);
        put(m_records, i, 3, StatementStore::sideText(r.side), Qt::AlignCenter);
        put(m_records, i, 4, figure(r.amount), Qt::AlignRight);
        put(m_records, i, 5, r.explain);
        if (!ticked) {
            ++bookOpenCount;
            bookOpen = r.side == StatementSide::Receipt ? bookOpen + r.amount : bookOpen - r.amount;
        }
    }
    m_lines->resizeColumnsToContents();
    m_records->resizeColumnsToContents();
    say(QStringLiteral("对账单未勾对 %1 笔，净额 %2；日记账未勾对 %3 笔，净额 %4。")
            .arg(bankOpenCount)
            .arg(figure(bankOpen))
            .arg(bookOpenCount)
            .arg(figure(bookOpen)),
        false);
}

QList<int> ReconcileView::selectedKeys(QTableWidget *t) const
{
    QList<int> keys;
    for (const QModelIndex &index : t->selectionModel()->selectedRows())
        keys << t->item(index.row(), 0)->data(Qt::UserRole).toInt();
    return keys;
}

bool ReconcileView::importFile(const QString &path)
{
    if (contextGone())
        return false;
    Database &db = m_acc->Connection();
    StatementStore store(db);
    const int docId = d.state.savedDocId();
    const Result<std::optional<ColumnMapping>> kept = store.mapping(docId);
    if (!kept.ok()) {
        say(kept.error(), true);
        return false;
    }
    Result<Statement> read = StatementReader::read(path, kept.value());
    // A file of another layout than the one kept: read by its own header.
    if (!read.ok() && kept.value())
        read = StatementReader::read(path);
    if (!read.ok()) {
        say(QFileInfo(path).fileName() + QStringLiteral("：") + read.error(), true);
        return false;
    }
    const Statement &statement = read.value();
    if (statement.mapping && (!kept.value() || !(*kept.value() == *statement.mapping))) {
        const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
        const bool yes = d.ask(QStringLiteral("对账单各列取用如下：\n%1\n\n按这样导入，并记住这本账的对账单格式吗？")
                                   .arg(statement.mappingUsed),
                               QStringLiteral("导入银行对账单"));
        if (!yes || !d.alive() || contextGone())
            return false;
        if (const Result<void> r = store.rememberMapping(docId, *statement.mapping); !r.ok()) {
            say(r.error(), true);
            return false;
        }
    }
    const Result<ImportOutcome> done = store.import(docId, statement, QFileInfo(path).fileName(), m_acc->UserName());
    if (!done.ok()) {
        say(done.error(), true);
        return false;
    }
    const ImportOutcome &o = done.value();
    reload();
    if (o.again) {
        say(QStringLiteral("这个文件已经在 %1 导入过了，没有再导入。").arg(o.before), true);
        return false;
    }
    QString text = QStringLiteral("读入 %1 行，导入 %2 行，跳过 %3 行（已经导入过）。").arg(o.read).arg(o.added).arg(o.skipped);
    if (!statement.balanceBreaks.isEmpty()) {
        QStringList at;
        for (int line : statement.balanceBreaks)
            at << QString::number(line);
        text += QStringLiteral("余额接不上的行：第 %1 行，请核对对账单。").arg(at.join(QStringLiteral("、")));
    }
    say(text, !statement.balanceBreaks.isEmpty());
    return true;
}

void ReconcileView::autoMatch()
{
    if (contextGone())
        return;
    int left = 0;
    const Result<int> made = m_session->autoMatch(&left);
    if (!made.ok())
        return say(made.error(), true);
    fill();
    QString text = QStringLiteral("自动勾对 %1 笔。").arg(made.value());
    if (left > 0)
        text += QStringLiteral("%1 笔对账单有不止一种勾法，请人工勾对。").arg(left);
    say(text, false);
}

void ReconcileView::matchSelected()
{
    if (contextGone())
        return;
    const QList<int> lines = selectedKeys(m_lines);
    if (lines.size() != 1)
        return say(QStringLiteral("请在左边选出一行对账单，在右边选出与它相对的记录。"), true);
    const Result<void> done = m_session->match(lines.first(), selectedKeys(m_records));
    if (!done.ok())
        return say(done.error(), true);
    fill();
}

void ReconcileView::unmatchSelected()
{
    if (contextGone())
        return;
    const QList<int> lines = selectedKeys(m_lines);
    if (lines.isEmpty())
        return say(QStringLiteral("请在左边选出要取消勾对的对账单。"), true);
    for (const int line : lines) {
        const Result<void> done = m_session->unmatch(line);
        if (!done.ok())
            return say(done.error(), true);
    }
    fill();
}

void ReconcileView::undo()
{
    if (contextGone())
        return;
    const Result<bool> done = m_session->undo();
    if (!done.ok())
        return say(done.error(), true);
    fill();
    if (!done.value())
        say(QStringLiteral("没有可以撤销的勾对。"), true);
}

void ReconcileView::recordFromSelected()
{
    if (contextGone())
        return;
    const QList<int> lines = selectedKeys(m_lines);
    if (lines.size() != 1)
        return say(QStringLiteral("请选出一行日记账里没有的对账单。"), true);
    const std::shared_ptr<JournalPrivate> keep = d.shared_from_this();
    if (!d.alive() || !d.edit || !d.settleEditor())
        return;
    Result<int> made = Error(QString());
    // Marking the book dirty tells the host, which may delete the control,
    // and this view with it.
    const QPointer<ReconcileView> self(this);
    d.step(QStringLiteral("Reconcile"), QStringLiteral("生成记录"), [&] {
        made = m_session->recordFrom(lines.first(), d.edit->context(), d.edit->rules());
        return made.ok();
    });
    if (!self)
        return;
    if (!made.ok())
        return say(made.error(), true);
    if (d.alive())
        d.grid->setCursor(made.value(), d.grid->col());
    say(QStringLiteral("已在日记账末尾加上这笔记录；存储以后就可以勾对。"), false);
}

} // namespace kx
