#include "control/DailyReportView.h"
#include "control/SideView.h"

#include "control/JournalPrivate.h"
#include "kxjournal/AccContext.h"
#include "kxjournal/Database.h"
#include "kxjournal/Journal.h"
#include "output/DailyReportWriter.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

namespace kx {

namespace {

QString figure(Currency amount)
{
    return amount.format(QStringLiteral("#,##0.00"));
}

void put(QTableWidget *t, int row, int col, const QString &text, Qt::Alignment align = Qt::AlignLeft)
{
    auto *item = new QTableWidgetItem(text);
    item->setTextAlignment(align | Qt::AlignVCenter);
    t->setItem(row, col, item);
}

QTreeWidgetItem *lineItem(const DailyReport::Line &l, const QString &name)
{
    auto *item = new QTreeWidgetItem(QStringList{l.book.code, name, figure(l.opening), QString::number(l.receiptCount),
                                                 figure(l.receipts), QString::number(l.paymentCount),
                                                 figure(l.payments), figure(l.closing())});
    item->setData(0, Qt::UserRole, l.book.id);
    for (int c = 2; c < 8; ++c)
        item->setTextAlignment(c, Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

} // namespace

DailyReportView *DailyReportView::open(JournalPrivate &d)
{
    DailyReportView *view = openSideView<DailyReportView>(
        d, QStringLiteral("DailyReport"),
        [&d](AccContext &acc) { return new DailyReportView(acc, d.state.savedDocId(), d.q); },
        [&d](DailyReportView *shown) {
            if (shown->m_bookId != d.state.savedDocId())
                return false;
            shown->reload();
            return true;
        });
    if (view && d.alive() && d.state.dirty)
        view->say(QStringLiteral("日记账有没有存储的修改，报表只含已经存储的记录。"), true);
    return view;
}

DailyReportView::DailyReportView(AccContext &acc, int bookId, QWidget *parent) : QDialog(parent), m_acc(&acc)
{
    setObjectName(QStringLiteral("dailyReportView"));
    setWindowTitle(QStringLiteral("资金日报表"));
    const Result<BookDirectory> books = BookDirectory::read(acc.Connection());
    if (books.ok() && books.value().byId(bookId))
        m_bookId = bookId;

    const auto dateEdit = [](const QString &name) {
        auto *e = new QDateEdit;
        e->setObjectName(name);
        e->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        e->setCalendarPopup(true);
        return e;
    };
    m_fromEdit = dateEdit(QStringLiteral("dailyFrom"));
    m_toEdit = dateEdit(QStringLiteral("dailyTo"));
    m_scope = new QComboBox;
    m_scope->setObjectName(QStringLiteral("dailyScope"));
    if (m_bookId != 0)
        m_scope->addItem(QStringLiteral("本账及下级日记账"), false);
    m_scope->addItem(QStringLiteral("全部日记账"), true);
    m_withRows = new QCheckBox(QStringLiteral("列出明细"));
    m_withRows->setObjectName(QStringLiteral("dailyWithRows"));
    m_withRows->setToolTip(QStringLiteral("打印和导出时，在每本末级日记账下列出期间内的记录"));
    auto *print = new QPushButton(QStringLiteral("打印"));
    print->setObjectName(QStringLiteral("dailyPrint"));
    auto *exporting = new QPushButton(QStringLiteral("导出"));
    exporting->setObjectName(QStringLiteral("dailyExport"));
    for (QPushButton *b : {print, exporting})
        b->setAutoDefault(false);
    connect(print, &QPushButton::clicked, this, [this] { chooseAndWrite(true); });
    connect(exporting, &QPushButton::clicked, this, [this] { chooseAndWrite(false); });
    chooseFile = [this](const QString &caption, const QString &filter) {
        return QFileDialog::getSaveFileName(this, caption, QString(), filter);
    };

    auto *bar = new QHBoxLayout;
    bar->addWidget(new QLabel(QStringLiteral("日期：")));
    bar->addWidget(m_fromEdit);
    bar->addWidget(new QLabel(QStringLiteral("至")));
    bar->addWidget(m_toEdit);
    bar->addWidget(m_scope);
    bar->addWidget(m_withRows);
    bar->addStretch();
    bar->addWidget(print);
    bar->addWidget(exporting);

    m_lines = new QTreeWidget;
    m_lines->setObjectName(QStringLiteral("dailyLines"));
    m_lines->setHeaderLabels(DailyReport::headers());
    m_lines->setRootIsDecorated(true);
    m_lines->setUniformRowHeights(true);
    m_lines->setSelectionMode(QAbstractItemView::SingleSelection);
    // The book's name takes the room left; the figures keep their width.
    m_lines->header()->setStretchLastSection(false);
    m_lines->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_lines->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_records = new QTableWidget(0, 7);
    m_records->setObjectName(QStringLiteral("dailyRecords"));
    m_records->setHorizontalHeaderLabels({QStringLiteral("日记账"), QStringLiteral("日期"), QStringLiteral("单据号"),
                                          QStringLiteral("摘要"), QStringLiteral("对方科目"), QStringLiteral("借方"),
                                          QStringLiteral("贷方")});
    m_records->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_records->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_records->verticalHeader()->hide();
    m_records->verticalHeader()->setDefaultSectionSize(22);
    m_records->horizontalHeader()->setSectionResizeMode(3, QHeaderView::Stretch);
    auto *split = new QSplitter(Qt::Vertical);
    split->addWidget(m_lines);
    split->addWidget(m_records);
    m_status = new QLabel;
    m_status->setObjectName(QStringLiteral("dailyStatus"));
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(bar);
    layout->addWidget(split, 1);
    layout->addWidget(m_status);
    resize(980, 600);

    connect(m_fromEdit, &QDateEdit::dateChanged, this, [this] { setDays(m_fromEdit->date(), m_toEdit->date()); });
    connect(m_toEdit, &QDateEdit::dateChanged, this, [this] { setDays(m_fromEdit->date(), m_toEdit->date()); });
    connect(m_scope, &QComboBox::currentIndexChanged, this, [this] { reload(); });
    connect(m_lines, &QTreeWidget::currentItemChanged, this, [this] { showRecords(); });
    const QDate day = defaultDay();
    setDays(day, day);
}

bool DailyReportView::contextGone()
{
    if (m_acc)
        return false;
    say(QStringLiteral("没有连接到账套。"), true);
    return true;
}

void DailyReportView::say(const QString &text, bool problem)
{
    m_status->setText(text);
    m_status->setStyleSheet(problem ? QStringLiteral("color: #b00020") : QString());
}

QDate DailyReportView::defaultDay()
{
    const QDate today = QDate::currentDate();
    if (contextGone())
        return today;
    const int root = m_scope && m_scope->currentData().toBool() ? 0 : m_bookId;
    const Result<QDate> upToToday = DailyReport::lastDay(m_acc->Connection(), root, today);
    if (upToToday.ok() && upToToday.value().isValid())
        return upToToday.value();
    const Result<QDate> any = DailyReport::lastDay(m_acc->Connection(), root);
    return any.ok() && any.value().isValid() ? any.value() : today;
}

void DailyReportView::setDays(const QDate &from, const QDate &to)
{
    for (const auto &[edit, day] : {std::pair{m_fromEdit, from}, std::pair{m_toEdit, to}}) {
        const QSignalBlocker quiet(edit);
        edit->setDate(day);
    }
    if (from == m_from && to == m_to && !m_report.isEmpty())
        return;
    m_from = from;
    m_to = to;
    reload();
}

void DailyReportView::setAllBooks(bool all)
{
    const int at = m_scope->findData(all);
    if (at >= 0)
        m_scope->setCurrentIndex(at);
}

bool DailyReportView::reload()
{
    const int selected =
        m_lines->currentItem() ? m_lines->currentItem()->data(0, Qt::UserRole).toInt() : m_bookId;
    m_report.clear();
    if (contextGone()) {
        fillLines();
        return false;
    }
    const int root = m_scope->currentData().toBool() ? 0 : m_bookId;
    const Result<QList<DailyReport::Line>> made = DailyReport::make(m_acc->Connection(), root, m_from, m_to);
    if (!made.ok()) {
        fillLines();
        say(made.error(), true);
        return false;
    }
    m_report = made.value();
    fillLines();
    if (!selectBook(selected) && !m_report.isEmpty())
        selectBook(m_report.first().book.id);
    setWindowTitle(QStringLiteral("资金日报表 - ") + DailyReport::span(m_from, m_to));
    const DailyReport::Line total = DailyReportWriter(m_report, m_from, m_to).total();
    say(QStringLiteral("%1：收入 %2 笔 %3，支出 %4 笔 %5，期末余额 %6。")
            .arg(DailyReport::span(m_from, m_to))
            .arg(total.receiptCount)
            .arg(figure(total.receipts))
            .arg(total.paymentCount)
            .arg(figure(total.payments))
            .arg(figure(total.closing())),
        false);
    return true;
}

void DailyReportView::fillLines()
{
    const QSignalBlocker quiet(m_lines);
    m_lines->clear();
    QHash<int, QTreeWidgetItem *> items;
    QFont bold = m_lines->font();
    bold.setBold(true);
    for (const DailyReport::Line &l : m_report) {
        QTreeWidgetItem *item = lineItem(l, l.book.name);
        if (l.book.hasChildren)
            for (int c = 0; c < 8; ++c)
                item->setFont(c, bold);
        if (QTreeWidgetItem *above = items.value(l.book.parentId))
            above->addChild(item);
        else
            m_lines->addTopLevelItem(item);
        items.insert(l.book.id, item);
    }
    if (!m_report.isEmpty()) {
        QTreeWidgetItem *sum = lineItem(DailyReportWriter(m_report, m_from, m_to).total(), QStringLiteral("合计"));
        for (int c = 0; c < 8; ++c)
            sum->setFont(c, bold);
        m_lines->addTopLevelItem(sum);
    }
    m_lines->expandAll();
    for (int c = 0; c < 8; ++c)
        m_lines->resizeColumnToContents(c);
    showRecords();
}

bool DailyReportView::selectBook(int bookId)
{
    for (QTreeWidgetItemIterator it(m_lines); *it; ++it)
        if ((*it)->data(0, Qt::UserRole).toInt() == bookId) {
            m_lines->setCurrentItem(*it);
            return true;
        }
    return false;
}

void DailyReportView::showRecords()
{
    m_records->setRowCount(0);
    const QTreeWidgetItem *current = m_lines->currentItem();
    if (!current || m_report.isEmpty() || contextGone())
        return;
    // The bottom books at or below the line chosen (the 合计 line: all of them).
    const int chosen = current->data(0, Qt::UserRole).toInt();
    QHash<int, int> above;
    QHash<int, QString> names;
    for (const DailyReport::Line &l : m_report) {
        above.insert(l.book.id, l.book.parentId);
        names.insert(l.book.id, l.book.name);
    }
    QList<int> bottoms;
    for (const DailyReport::Line &l : m_report) {
        if (l.book.hasChildren)
            continue;
        int at = l.book.id;
        while (chosen != 0 && at != 0 && at != chosen)
            at = above.value(at);
        if (chosen == 0 || at == chosen)
            bottoms << l.book.id;
    }
    const Result<QHash<int, QList<DailyReport::Entry>>> read =
        DailyReport::entries(m_acc->Connection(), bottoms, m_from, m_to);
    if (!read.ok())
        return say(read.error(), true);
    int row = 0;
    for (const int book : bottoms) {
        for (const DailyReport::Entry &e : read.value().value(book)) {
            m_records->setRowCount(row + 1);
            put(m_records, row, 0, names.value(book));
            put(m_records, row, 1, e.date.toString(Qt::ISODate));
            put(m_records, row, 2, e.number);
            put(m_records, row, 3, e.explain);
            put(m_records, row, 4, e.account);
            put(m_records, row, 5, e.debit.isZero() ? QString() : figure(e.debit), Qt::AlignRight);
            put(m_records, row, 6, e.credit.isZero() ? QString() : figure(e.credit), Qt::AlignRight);
            ++row;
        }
    }
    m_records->resizeColumnsToContents();
}

void DailyReportView::chooseAndWrite(bool pdf)
{
    if (contextGone())
        return;
    // The file dialog runs an event loop: the host may delete the control,
    // and this view with it, before it answers.
    const QPointer<DailyReportView> self(this);
    // A copy: the asker goes with the view when the view goes.
    const auto ask = chooseFile;
    QString path = ask ? ask(pdf ? QStringLiteral("打印资金日报表") : QStringLiteral("导出资金日报表"),
                                           pdf ? QStringLiteral("PDF 文件 (*.pdf)")
                                               : QStringLiteral("Excel 工作簿 (*.xlsx);;CSV 文件 (*.csv)"))
                              : QString();
    if (!self || path.isEmpty())
        return;
    if (pdf) {
        if (!path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
            path += QStringLiteral(".pdf");
        printTo(path);
    } else {
        exportTo(path);
    }
}

bool DailyReportView::printTo(const QString &path)
{
    if (!path.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive)) {
        say(QStringLiteral("打印只能写成 .pdf 文件：%1").arg(path), true);
        return false;
    }
    return write(path);
}

bool DailyReportView::exportTo(const QString &path)
{
    if (!path.endsWith(QLatin1String(".xlsx"), Qt::CaseInsensitive) &&
        !path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive)) {
        say(QStringLiteral("资金日报表只能导出成 .xlsx 或 .csv 文件：%1").arg(path), true);
        return false;
    }
    return write(path);
}

bool DailyReportView::write(const QString &path)
{
    if (contextGone())
        return false;
    if (m_report.isEmpty()) {
        say(QStringLiteral("没有可以写出的报表：请先选好日期。"), true);
        return false;
    }
    Database &db = m_acc->Connection();
    DailyReportWriter report(m_report, m_from, m_to, m_acc->UserName());
    if (m_withRows->isChecked()) {
        QList<int> bottoms;
        for (const DailyReport::Line &l : m_report)
            if (!l.book.hasChildren)
                bottoms << l.book.id;
        const Result<QHash<int, QList<DailyReport::Entry>>> read = DailyReport::entries(db, bottoms, m_from, m_to);
        if (!read.ok()) {
            say(read.error(), true);
            return false;
        }
        report.setEntries(read.value());
    }
    if (const Result<void> written = report.write(path); !written.ok()) {
        say(written.error(), true);
        return false;
    }
    say(QStringLiteral("资金日报表已写入 %1").arg(QDir::toNativeSeparators(path)), false);
    return true;
}

} // namespace kx
