#include "kxjournal/CalculatorPopup.h"

#include "editing/FormulaEvaluator.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace kx {

class CalculatorPopup::Private
{
public:
    QLineEdit *line = nullptr;
    QLabel *result = nullptr;
    QString value = QStringLiteral("0");
};

CalculatorPopup::CalculatorPopup(QWidget *parent) : QFrame(parent), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("CalculatorPopup"));
    setFrameShape(QFrame::Box);
    setAutoFillBackground(true);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(4, 4, 4, 4);
    d->line = new QLineEdit(this);
    d->line->setObjectName(QStringLiteral("expression"));
    d->result = new QLabel(QStringLiteral("0"), this);
    d->result->setObjectName(QStringLiteral("result"));
    d->result->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(d->line, 0, 0, 1, 4);
    grid->addWidget(d->result, 1, 0, 1, 4);
    const QString keys = QStringLiteral("789÷456×123−0.()+");
    int i = 0;
    for (QChar k : keys) {
        auto *b = new QPushButton(QString(k), this);
        b->setFocusPolicy(Qt::NoFocus);
        b->setFixedWidth(36);
        connect(b, &QPushButton::clicked, this, [this, k] { d->line->insert(QString(k)); });
        grid->addWidget(b, 2 + i / 4, i % 4);
        ++i;
    }
    auto *equals = new QPushButton(QStringLiteral("="), this);
    equals->setObjectName(QStringLiteral("equals"));
    equals->setFocusPolicy(Qt::NoFocus);
    grid->addWidget(equals, 2 + i / 4, i % 4, 1, 4 - i % 4);
    connect(equals, &QPushButton::clicked, this, [this] { deliver(d->line->text()); });
    connect(d->line, &QLineEdit::textChanged, this, [this](const QString &t) {
        const Result<Currency> v = FormulaEvaluator::evaluate(t);
        d->result->setText(v.ok() ? v.value().toString() : QStringLiteral("？"));
        if (v.ok() && v.value().toString() != d->value) {
            d->value = v.value().toString();
            Q_EMIT valueChanged(d->value);
        }
    });
    d->line->installEventFilter(this);
    hide();
}

CalculatorPopup::~CalculatorPopup() = default;

QString CalculatorPopup::expression() const { return d->line->text(); }
void CalculatorPopup::setExpression(const QString &expression) { d->line->setText(expression); }
QString CalculatorPopup::value() const { return d->value; }

bool CalculatorPopup::deliver(const QString &expression)
{
    if (d->line->text() != expression)
        d->line->setText(expression);
    const Result<Currency> v = FormulaEvaluator::evaluate(expression);
    if (!v.ok()) {
        d->result->setText(v.error());
        return false;
    }
    d->value = v.value().toString();
    hide();
    Q_EMIT finished(d->value);
    return true;
}

void CalculatorPopup::showEvent(QShowEvent *event)
{
    QFrame::showEvent(event);
    raise();
    d->line->setFocus();
    d->line->selectAll();
}

bool CalculatorPopup::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == d->line && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Equal) {
            deliver(d->line->text());
            return true;
        }
        if (key == Qt::Key_Escape) {
            hide();
            Q_EMIT dismissed();
            return true;
        }
    }
    return QFrame::eventFilter(watched, event);
}

} // namespace kx
