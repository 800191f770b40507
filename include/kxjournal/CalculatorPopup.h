#pragma once

#include "kxjournal/kxjournal_export.h"

#include <QFrame>
#include <memory>

namespace kx {

/// The control's calculator for amount cells: an expression line (numbers,
/// + − × ÷ or * /, parentheses) whose value is worked out exactly as it is
/// typed and rounded to two places. "=" or Enter delivers the value into the
/// cell; Esc closes without writing.
class KXJOURNAL_EXPORT CalculatorPopup : public QFrame
{
    Q_OBJECT
public:
    /// A calculator with an empty expression.
    explicit CalculatorPopup(QWidget *parent = nullptr);
    ~CalculatorPopup() override;

    /// The expression typed.
    QString expression() const;
    /// Sets the expression (its value is shown and reported at once).
    void setExpression(const QString &expression);
    /// The value of the expression ("0" while it has none).
    QString value() const;
    /// Evaluates \a expression and delivers its value as the user's "=" and
    /// OK would: emits finished() and closes. False (nothing delivered, the
    /// calculator stays open and says why) when it cannot be worked out.
    bool deliver(const QString &expression);

Q_SIGNALS:
    /// The value changed while the expression was typed.
    void valueChanged(const QString &value);
    /// The user took \a value.
    void finished(const QString &value);
    /// The calculator closed without a value.
    void dismissed();

protected:
    /// Enter or "=" in the entry line delivers the value; Escape closes without one.
    bool eventFilter(QObject *watched, QEvent *event) override;
    /// Comes to the front with the entry line focused and selected.
    void showEvent(QShowEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace kx
