// The Qt back end's widgets: the window of an XWindow, the owner-drawn
// list box, and the routing of events into the toolkit's messages.
#pragma once

#include <QAbstractScrollArea>
#include <QHash>
#include <QObject>
#include <QVector>
#include <QWidget>

#include "toolkit/messages.h"

class XWindow;
class XSubClassCtrl;

inline clWindowHandle HandleOf(QWidget* widget) { return reinterpret_cast<clWindowHandle>(widget); }
// The widget of a handle while it lives, else null: a handle kept by a
// form may outlive a widget its parent took down with it.
QWidget* WidgetOf(clWindowHandle window);
// Makes a widget's handle known until the widget is gone.
void TrackWidget(QWidget* widget);

// Delivers a message as the toolkit routes it: the control's subclass
// first, then the window's object, then the widget's own handling.
intptr_t RouteMessage(QWidget* target, uint32_t message, uintptr_t wParam, intptr_t lParam);
// The toolkit control id of a widget, 0 if none.
uint32_t ControlIdOf(QWidget* widget);
// The window a control reports to: its parent, or the list whose
// viewport holds it.
QWidget* ToolkitParentOf(QWidget* widget);

// List and tree views (qtviews.cpp): making one, and what a view does with
// a toolkit message nobody took.
QWidget* CreateQtView(bool tree, QWidget* host);
intptr_t QtViewDefaultHandling(QWidget* widget, uint32_t message, uintptr_t wParam, intptr_t lParam);

class clQtWindow : public QWidget {
public:
    clQtWindow(QWidget* parent, Qt::WindowFlags flags) : QWidget(parent, flags) {}
    bool alive = true;
    QHash<int, uint64_t> timerIds;  // Qt's timer id -> the toolkit's

    // Runs a message through XWindow::Procedure; true when the default
    // handling is wanted.
    intptr_t Route(uint32_t message, uintptr_t wParam, intptr_t lParam, bool* useDefault);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
};

// An owner-drawn list box: rows of their own heights; each row is
// painted by the parent through kWmDrawItem.
class clQtListBox : public QAbstractScrollArea {
public:
    struct Row {
        int height = 20;
        uint64_t data = 0;
    };
    QVector<Row> rows;
    int selected = -1;

    explicit clQtListBox(QWidget* parent);
    int RowTop(int index) const;  // in the whole list, before scrolling
    int RowAt(int y) const;       // a viewport y; -1 below the last
    QRect RowRect(int index) const;
    void UpdateScrollRange();
    void Select(int index, bool notify);
    void EnsureVisible(int index);
    int TopIndex() const;
    void SetTopIndex(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};
