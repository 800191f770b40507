// The Designer plugin as Designer and QUiLoader load it: the widget box entry
// names kx::Journal and makes one, and a form saved by Designer with the
// control's looks comes back with those looks on screen. This binary does not
// link the library (the plugin carries it): the control is read through its
// properties and drawn, as a form's host sees it.
#include "QtPrinters.h"

#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QImage>
#include <QMetaProperty>
#include <QPluginLoader>
#include <QSet>
#include <QTableView>
#include <QUiLoader>
#include <QXmlStreamReader>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <gtest/gtest.h>

#include <memory>

namespace {

// The kx::Journal entries the plugin offers (one, unless the plugin is broken).
QList<QDesignerCustomWidgetInterface *> journalEntries(QObject *instance)
{
    QList<QDesignerCustomWidgetInterface *> all;
    if (auto *collection = qobject_cast<QDesignerCustomWidgetCollectionInterface *>(instance))
        all = collection->customWidgets();
    else if (auto *one = qobject_cast<QDesignerCustomWidgetInterface *>(instance))
        all << one;
    QList<QDesignerCustomWidgetInterface *> journals;
    for (QDesignerCustomWidgetInterface *w : all)
        if (w->name() == QLatin1String("kx::Journal"))
            journals << w;
    return journals;
}

// The grid view inside a control (not the second view of its frozen columns).
QTableView *gridViewOf(QWidget *journal)
{
    for (QTableView *v : journal->findChildren<QTableView *>())
        if (QByteArrayView(v->metaObject()->className()) == "kx::GridView")
            return v;
    return nullptr;
}

// The properties Designer shows in its editor and writes into a .ui.
QSet<QString> designTimeProperties(const QMetaObject *mo)
{
    QSet<QString> names;
    for (int i = QWidget::staticMetaObject.propertyCount(); i < mo->propertyCount(); ++i) {
        const QMetaProperty p = mo->property(i);
        if (p.isWritable() && p.isDesignable() && p.isStored())
            names.insert(QString::fromLatin1(p.name()));
    }
    return names;
}

} // namespace

TEST(DesignerPlugin, OffersTheJournalInItsGroupAndMakesOne)
{
    QPluginLoader plugin(QStringLiteral(KX_DESIGNER_PLUGIN));
    QObject *instance = plugin.instance();
    ASSERT_NE(instance, nullptr) << qPrintable(plugin.errorString());
    const QList<QDesignerCustomWidgetInterface *> entries = journalEntries(instance);
    ASSERT_EQ(entries.size(), 1);
    QDesignerCustomWidgetInterface *entry = entries.first();
    EXPECT_EQ(entry->group(), QStringLiteral("kxAccJournal"));
    EXPECT_EQ(entry->includeFile(), QStringLiteral("kxjournal/Journal.h"));
    EXPECT_FALSE(entry->isContainer());

    std::unique_ptr<QWidget> made(entry->createWidget(nullptr));
    ASSERT_NE(made, nullptr);
    EXPECT_STREQ(made->metaObject()->className(), "kx::Journal");
    EXPECT_NE(gridViewOf(made.get()), nullptr);

    // What a new control is dropped with: the class and a size to work in.
    QXmlStreamReader xml(entry->domXml());
    QString widgetClass, widgetName;
    int width = 0, height = 0;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("widget") && widgetClass.isEmpty()) {
            widgetClass = xml.attributes().value(QLatin1String("class")).toString();
            widgetName = xml.attributes().value(QLatin1String("name")).toString();
        } else if (xml.name() == QLatin1String("width")) {
            width = xml.readElementText().toInt();
        } else if (xml.name() == QLatin1String("height")) {
            height = xml.readElementText().toInt();
        }
    }
    EXPECT_FALSE(xml.hasError()) << qPrintable(xml.errorString());
    EXPECT_EQ(widgetClass, QStringLiteral("kx::Journal"));
    EXPECT_EQ(widgetName, QStringLiteral("journal"));
    EXPECT_GE(width, 400);
    EXPECT_GE(height, 200);

    // Only the looks, key lists, formats and caption go into a form: a book,
    // a row, a date or a dirty flag written into a .ui would be set on every
    // control made from it.
    const QSet<QString> expected = {
        QStringLiteral("Caption"), QStringLiteral("BorderColor"), QStringLiteral("BackColor"),
        QStringLiteral("BackColorFixed"), QStringLiteral("BackColorBkg"), QStringLiteral("GridColor"),
        QStringLiteral("GridColorFixed"), QStringLiteral("HotBackColor"), QStringLiteral("WarnBackColor"),
        QStringLiteral("LockedForeColor"), QStringLiteral("ModifiedForeColor"), QStringLiteral("ColsFilter"),
        QStringLiteral("OutlineKey"), QStringLiteral("ListFields"), QStringLiteral("NumericFields"),
        QStringLiteral("EditFields"), QStringLiteral("DateFields"), QStringLiteral("Font"),
        QStringLiteral("RowHeightMax"), QStringLiteral("RowHeightMin"), QStringLiteral("PriceFormat"),
        QStringLiteral("RateFormat"), QStringLiteral("QuantityFormat"), QStringLiteral("AccountFormat"),
        QStringLiteral("DateFormat")};
    EXPECT_EQ(designTimeProperties(made->metaObject()), expected);
}

TEST(DesignerPlugin, AFormSavedByDesignerComesBackWithItsLooks)
{
    QUiLoader loader;
    // Only this plugin: the system's Designer plugins have nothing to do here.
    loader.clearPluginPaths();
    loader.addPluginPath(QStringLiteral(KX_DESIGNER_PLUGIN_DIR));
    ASSERT_TRUE(loader.availableWidgets().contains(QStringLiteral("kx::Journal")));

    QFile file(QStringLiteral(KX_DESIGNER_FORM));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::unique_ptr<QWidget> form(loader.load(&file));
    ASSERT_NE(form, nullptr) << qPrintable(loader.errorString());
    auto *journal = form->findChild<QWidget *>(QStringLiteral("journal"));
    ASSERT_NE(journal, nullptr);
    ASSERT_STREQ(journal->metaObject()->className(), "kx::Journal") << "made by the plugin, not a stand-in";

    EXPECT_EQ(journal->property("Caption").toString(), QStringLiteral("银行日记账"));
    const QColor border(0x20, 0x40, 0x60), back(0xfa, 0xf0, 0xe6), fixed(0xdd, 0xee, 0xcc), bkg(0x70, 0x70, 0x90),
        gridLine(0x99, 0x33, 0x33), fixedLine(0x33, 0x99, 0x33);
    EXPECT_EQ(journal->property("BorderColor").value<QColor>(), border);
    EXPECT_EQ(journal->property("BackColor").value<QColor>(), back);
    EXPECT_EQ(journal->property("BackColorFixed").value<QColor>(), fixed);
    EXPECT_EQ(journal->property("BackColorBkg").value<QColor>(), bkg);
    EXPECT_EQ(journal->property("GridColor").value<QColor>(), gridLine);
    EXPECT_EQ(journal->property("GridColorFixed").value<QColor>(), fixedLine);
    EXPECT_EQ(journal->property("HotBackColor").value<QColor>(), QColor(0xff, 0xff, 0xc0));
    EXPECT_EQ(journal->property("WarnBackColor").value<QColor>(), QColor(0xff, 0xa0, 0xa0));
    EXPECT_EQ(journal->property("LockedForeColor").value<QColor>(), QColor(0x60, 0x60, 0xc0));
    EXPECT_EQ(journal->property("ModifiedForeColor").value<QColor>(), QColor(0xc0, 0x30, 0x30));
    EXPECT_EQ(journal->property("RowHeightMax").toInt(), 40);
    EXPECT_EQ(journal->property("RowHeightMin").toInt(), 30);
    EXPECT_EQ(journal->property("AccountFormat").toString(), QStringLiteral("#,##0.000"));
    EXPECT_EQ(journal->property("EditFields").toString(), QStringLiteral("|Explain|Debit|Credit|"));
    const QFont font = journal->property("Font").value<QFont>();
    EXPECT_EQ(font.family(), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_EQ(font.pointSize(), 12);

    // And on screen: what the grid draws with, not only what it keeps.
    form->show();
    QTableView *view = gridViewOf(journal);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->font().family(), QStringLiteral("Noto Sans CJK SC"));
    EXPECT_EQ(view->verticalHeader()->defaultSectionSize(), 30) << "rows are raised to RowHeightMin";
    QApplication::processEvents();
    const QImage drawn = view->grab().toImage();
    const QHeaderView *header = view->horizontalHeader();
    int widest = -1;
    for (int c = 0; c < header->count(); ++c)
        if (!header->isSectionHidden(c) && header->sectionViewportPosition(c) >= 0 &&
            (widest < 0 || header->sectionSize(c) > header->sectionSize(widest)))
            widest = c;
    ASSERT_GE(widest, 0);
    // A header section: its background near its left edge, its rule at its right edge.
    const int left = header->geometry().x() + header->sectionViewportPosition(widest);
    const int top = header->geometry().y() + 3;
    EXPECT_EQ(drawn.pixelColor(left + 3, top), fixed);
    EXPECT_EQ(drawn.pixelColor(left + header->sectionSize(widest) - 1, top), fixedLine);
    // No book: the whole area below the header is the background outside the cells.
    const QRect area = view->viewport()->geometry();
    EXPECT_EQ(drawn.pixelColor(area.center()), bkg);
    EXPECT_EQ(drawn.pixelColor(area.bottomRight() - QPoint(2, 2)), bkg);
    // The frame around the grid: at least a one-pixel ring of the border colour.
    const QImage whole = journal->grab().toImage();
    qsizetype ring = 0;
    for (int y = 0; y < whole.height(); ++y)
        for (int x = 0; x < whole.width(); ++x)
            ring += whole.pixelColor(x, y) == border;
    EXPECT_GE(ring, 2 * (view->width() + view->height()));
}
