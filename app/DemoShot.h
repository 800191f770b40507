#pragma once

#include <QString>

class DemoWindow;

// What the demo draws for a screenshot: the window alone, or with the
// context menu open, the account picker searching, the explanation list
// open, the side panel's chart, or a window beside the journal (the print
// preview, the reconciliation view, the daily fund report).
struct Shot {
    QString file;
    QString pickerSearch;  ///< null: no picker
    bool menu = false;
    bool preview = false;
    bool reconcile = false;
    bool daily = false;
    bool side = false;
    bool explainList = false;
};

// Draws the window (and a popup over it) into the shot's file; 0 when written.
int takeShot(DemoWindow &window, const Shot &shot);
