#include "JournalDesignerPlugin.h"

#include <kxjournal/Journal.h>

#include <QIcon>

namespace kx {

JournalDesignerPlugin::JournalDesignerPlugin(QObject *parent) : QObject(parent) {}

QString JournalDesignerPlugin::name() const { return QStringLiteral("kx::Journal"); }
QString JournalDesignerPlugin::group() const { return QStringLiteral("kxAccJournal"); }
QString JournalDesignerPlugin::toolTip() const { return QStringLiteral("流水账"); }

QString JournalDesignerPlugin::whatsThis() const
{
    return QStringLiteral("流水账：一个账簿的记录，可编辑，带余额。");
}

QString JournalDesignerPlugin::includeFile() const { return QStringLiteral("kxjournal/Journal.h"); }

// The library ships no picture files (its book icon is drawn at run time
// and stays private): Designer shows its own icon for custom widgets.
QIcon JournalDesignerPlugin::icon() const { return QIcon(); }

bool JournalDesignerPlugin::isContainer() const { return false; }

QWidget *JournalDesignerPlugin::createWidget(QWidget *parent) { return new Journal(parent); }

bool JournalDesignerPlugin::isInitialized() const { return m_initialized; }

void JournalDesignerPlugin::initialize(QDesignerFormEditorInterface *)
{
    m_initialized = true;
}

QString JournalDesignerPlugin::domXml() const
{
    // Wide enough for the date, voucher, explanation and amount columns.
    return QStringLiteral(R"(<ui language="c++" displayname="Journal">
 <widget class="kx::Journal" name="journal">
  <property name="geometry">
   <rect>
    <x>0</x>
    <y>0</y>
    <width>720</width>
    <height>400</height>
   </rect>
  </property>
 </widget>
</ui>
)");
}

} // namespace kx
