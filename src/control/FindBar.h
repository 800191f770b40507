#pragma once

#include "output/BookFinder.h"

#include <QFrame>
#include <QVector>

class QLabel;
class QLineEdit;
class QListWidget;
class QTimer;

namespace kx {

class Sheet;

/// The find bar under the grid: the words typed are looked for as the user
/// types, the rows found are listed, Enter or F3 goes to the next one
/// (Shift: the one before), a click on the list goes to that one, Esc closes.
class FindBar : public QFrame
{
    Q_OBJECT
public:
    /// A bar searching \a grid.
    explicit FindBar(const Sheet &grid, QWidget *parent = nullptr);

    /// Shows the bar with its text selected, ready for typing.
    void open();
    /// Searches now for the text in the box.
    void search();
    /// Goes to the next row found below the grid's current row (\a forward)
    /// or above it, round the book's end.
    void step(bool forward);
    /// The rows the latest search found.
    const QVector<BookFinder::Hit> &hits() const { return m_hits; }

Q_SIGNALS:
    /// The user chose \a row among the rows found.
    void rowChosen(int row);
    /// The bar was closed from its own keys or button.
    void closed();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void go(int index);
    void close();
    void gridChanged();

    const Sheet &m_grid;
    QLineEdit *m_text;
    QLabel *m_count;
    QListWidget *m_list;
    QTimer *m_delay;
    QVector<BookFinder::Hit> m_hits;
    QString m_searched;
    bool m_stale = false;  ///< the grid changed since the hits were found
};

} // namespace kx
