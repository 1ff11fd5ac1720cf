// The Qt back end's windows: events and signals turned into the toolkit's
// messages, for XWindow's windows and for subclassed controls alike.
#include "toolkit/qt/qtwidgets.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QTimerEvent>
#include <QUrl>
#include <QWheelEvent>

#include "foundation/stringlist.h"
#include "toolkit/backend.h"
#include "toolkit/qt/qtcanvas.h"
#include "toolkit/subclassctrl.h"
#include "toolkit/xwindow.h"

namespace {

QSet<QString> classNames;

struct clQtMessage {
    uint32_t message = 0;
    uintptr_t wParam = 0;
    intptr_t lParam = 0;
};

uint32_t VirtualKey(const QKeyEvent* event) {
    int key = event->key();
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<uint32_t>('A' + (key - Qt::Key_A));
    if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<uint32_t>('0' + (key - Qt::Key_0));
    switch (key) {
        case Qt::Key_Backspace: return kVkBack;
        case Qt::Key_Tab:
        case Qt::Key_Backtab: return kVkTab;
        case Qt::Key_Return:
        case Qt::Key_Enter: return kVkReturn;
        case Qt::Key_Shift: return kVkShift;
        case Qt::Key_Control: return kVkControl;
        case Qt::Key_Escape: return kVkEscape;
        case Qt::Key_Space: return kVkSpace;
        case Qt::Key_PageUp: return kVkPrior;
        case Qt::Key_PageDown: return kVkNext;
        case Qt::Key_End: return kVkEnd;
        case Qt::Key_Home: return kVkHome;
        case Qt::Key_Left: return kVkLeft;
        case Qt::Key_Up: return kVkUp;
        case Qt::Key_Right: return kVkRight;
        case Qt::Key_Down: return kVkDown;
        case Qt::Key_Delete: return kVkDelete;
        case Qt::Key_F2: return kVkF2;
        default: return 0;
    }
}

uint32_t MouseFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
    uint32_t flags = 0;
    if (buttons & Qt::LeftButton) flags |= kMkLButton;
    if (buttons & Qt::RightButton) flags |= kMkRButton;
    if (buttons & Qt::MiddleButton) flags |= kMkMButton;
    if (modifiers & Qt::ShiftModifier) flags |= kMkShift;
    if (modifiers & Qt::ControlModifier) flags |= kMkControl;
    return flags;
}

// The messages of an event, at most two (a key and its character).
int Translate(QWidget* widget, QEvent* event, clQtMessage out[2]) {
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::MouseMove: {
            auto* mouse = static_cast<QMouseEvent*>(event);
            QPoint at = mouse->position().toPoint();
            out[0].lParam = clMakeLParam(at.x(), at.y());
            out[0].wParam = MouseFlags(mouse->buttons(), mouse->modifiers());
            if (event->type() == QEvent::MouseMove) {
                out[0].message = kWmMouseMove;
                return 1;
            }
            int base = mouse->button() == Qt::RightButton ? kWmRButtonDown
                       : mouse->button() == Qt::MiddleButton ? kWmMButtonDown
                                                              : kWmLButtonDown;
            out[0].message = static_cast<uint32_t>(base + (event->type() == QEvent::MouseButtonRelease   ? 1
                                                           : event->type() == QEvent::MouseButtonDblClick ? 2
                                                                                                          : 0));
            return 1;
        }
        case QEvent::Wheel: {
            auto* wheel = static_cast<QWheelEvent*>(event);
            QPoint at = wheel->globalPosition().toPoint();
            out[0] = {kWmMouseWheel,
                      clMakeWParam(MouseFlags(wheel->buttons(), wheel->modifiers()),
                                   static_cast<uint32_t>(static_cast<int16_t>(wheel->angleDelta().y()))),
                      clMakeLParam(at.x(), at.y())};
            return 1;
        }
        case QEvent::Leave: out[0] = {kWmMouseLeave, 0, 0}; return 1;
        case QEvent::KeyPress: {
            auto* key = static_cast<QKeyEvent*>(event);
            int count = 0;
            uint32_t code = VirtualKey(key);
            if (code != 0) out[count++] = {kWmKeyDown, code, key->isAutoRepeat() ? 0x40000000 : 0};
            QString text = key->text();
            if (!text.isEmpty() && text[0].unicode() >= 0x20 && code != kVkTab) {
                out[count++] = {kWmChar, text[0].unicode(), 0};
            }
            return count;
        }
        case QEvent::KeyRelease: {
            auto* key = static_cast<QKeyEvent*>(event);
            if (key->isAutoRepeat()) return 0;
            uint32_t code = VirtualKey(key);
            if (code == 0) return 0;
            out[0] = {kWmKeyUp, code, static_cast<intptr_t>(0xC0000000u)};
            return 1;
        }
        case QEvent::FocusIn: out[0] = {kWmSetFocus, 0, 0}; return 1;
        case QEvent::FocusOut: out[0] = {kWmKillFocus, 0, 0}; return 1;
        case QEvent::ContextMenu: {
            auto* menu = static_cast<QContextMenuEvent*>(event);
            out[0] = {kWmContextMenu, reinterpret_cast<uintptr_t>(widget),
                      clMakeLParam(menu->globalPos().x(), menu->globalPos().y())};
            return 1;
        }
        case QEvent::Resize: {
            QSize size = static_cast<QResizeEvent*>(event)->size();
            out[0] = {kWmSize, 0, clMakeLParam(size.width(), size.height())};
            return 1;
        }
        case QEvent::Move: {
            QPoint at = static_cast<QMoveEvent*>(event)->pos();
            out[0] = {kWmMove, 0, clMakeLParam(at.x(), at.y())};
            return 1;
        }
        case QEvent::Show: out[0] = {kWmShowWindow, 1, 0}; return 1;
        case QEvent::Hide: out[0] = {kWmShowWindow, 0, 0}; return 1;
        case QEvent::WindowActivate: out[0] = {kWmActivate, 1, 0}; return 1;
        case QEvent::WindowDeactivate: out[0] = {kWmActivate, 0, 0}; return 1;
        case QEvent::EnabledChange: out[0] = {kWmEnable, widget->isEnabled() ? 1u : 0u, 0}; return 1;
        default: return 0;
    }
}

// Subclassed controls: the object, and the widget whose handle it knows
// (a list box's viewport reports as the list box).
struct clSubclassEntry {
    XSubClassCtrl* object = nullptr;
    QWidget* control = nullptr;
};
QHash<QObject*, clSubclassEntry> subclasses;

class clSubclassFilter : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        auto found = subclasses.find(watched);
        if (found == subclasses.end()) return false;
        clSubclassEntry entry = found.value();
        clWindowHandle handle = HandleOf(entry.control);
        if (event->type() == QEvent::Paint) {
            uint32_t handled = 0;
            {
                QPainter painter(static_cast<QWidget*>(watched));
                clQtCanvas canvas(painter);
                entry.object->OnSubclassMessage(handle, kWmPaint, reinterpret_cast<uintptr_t>(&canvas), 0, &handled);
            }
            return handled != 0;
        }
        clQtMessage messages[2];
        int count = Translate(entry.control, event, messages);
        bool eaten = false;
        for (int i = 0; i < count; ++i) {
            if (!subclasses.contains(watched)) break;  // detached by the message before
            uint32_t handled = 0;
            entry.object->OnSubclassMessage(handle, messages[i].message, messages[i].wParam, messages[i].lParam,
                                            &handled);
            if (handled != 0) eaten = true;
        }
        // Shows, sizes and moves are facts, not requests: the widget must see them.
        QEvent::Type type = event->type();
        if (type == QEvent::Resize || type == QEvent::Move || type == QEvent::Show || type == QEvent::Hide ||
            type == QEvent::FocusIn || type == QEvent::FocusOut || type == QEvent::EnabledChange) {
            return false;
        }
        return eaten;
    }
};

clSubclassFilter* Filter() {
    static clSubclassFilter* filter = new clSubclassFilter;
    return filter;
}

}  // namespace

static QSet<QWidget*>& LiveWidgets() {
    static QSet<QWidget*> widgets;
    return widgets;
}

QWidget* WidgetOf(clWindowHandle window) {
    auto* widget = reinterpret_cast<QWidget*>(window);
    return widget != nullptr && LiveWidgets().contains(widget) ? widget : nullptr;
}

void TrackWidget(QWidget* widget) {
    if (widget == nullptr || LiveWidgets().contains(widget)) return;
    LiveWidgets().insert(widget);
    QObject::connect(widget, &QObject::destroyed, [widget](QObject*) {
        LiveWidgets().remove(widget);
        subclasses.remove(widget);
    });
}

uint32_t ControlIdOf(QWidget* widget) {
    return widget != nullptr ? widget->property("qvId").toUInt() : 0;
}

intptr_t BackendDefaultHandling(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return 0;
    if (message == kWmClose && dynamic_cast<clQtWindow*>(widget) != nullptr) {
        BackendDestroyWindow(window);
        return 0;
    }
    if (qobject_cast<QAbstractItemView*>(widget) != nullptr) return QtViewDefaultHandling(widget, message, wParam, lParam);
    // An edit field leaves Escape to its window, as Qt's own key events do.
    if (message == kWmKeyDown && wParam == kVkEscape &&
        (qobject_cast<QLineEdit*>(widget) != nullptr || qobject_cast<QPlainTextEdit*>(widget) != nullptr) &&
        widget->window() != widget) {
        return RouteMessage(widget->window(), message, wParam, lParam);
    }
    if (auto* list = dynamic_cast<clQtListBox*>(widget)) {
        if (message == kWmLButtonDown) {
            int row = list->RowAt(clYOf(lParam));
            if (row >= 0) list->Select(row, true);
        } else if (message == kWmKeyDown && (wParam == kVkUp || wParam == kVkDown)) {
            int row = list->selected + (wParam == kVkUp ? -1 : 1);
            if (row >= 0 && row < list->rows.size()) list->Select(row, true);
        }
    }
    return 0;
}

intptr_t RouteMessage(QWidget* target, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    if (target == nullptr) return 0;
    clWindowHandle handle = HandleOf(target);
    for (auto entry = subclasses.cbegin(); entry != subclasses.cend(); ++entry) {
        if (entry.value().control != target) continue;
        uint32_t handled = 0;
        intptr_t result = entry.value().object->OnSubclassMessage(handle, message, wParam, lParam, &handled);
        if (handled != 0) return result;
        break;
    }
    if (auto* window = dynamic_cast<clQtWindow*>(target)) {
        bool useDefault = true;
        intptr_t result = window->Route(message, wParam, lParam, &useDefault);
        if (!useDefault) return result;
    }
    return BackendDefaultHandling(handle, message, wParam, lParam);
}

intptr_t clQtWindow::Route(uint32_t message, uintptr_t wParam, intptr_t lParam, bool* useDefault) {
    *useDefault = true;
    if (!alive) return 0;
    return XWindow::Procedure(HandleOf(this), message, wParam, lParam, nullptr, useDefault);
}

bool clQtWindow::event(QEvent* event) {
    QEvent::Type type = event->type();
    if (type == QEvent::DragEnter || type == QEvent::DragMove) {
        auto* drag = static_cast<QDropEvent*>(event);
        if (!drag->mimeData()->hasUrls()) return QWidget::event(event);
        drag->acceptProposedAction();
        return true;
    }
    if (type == QEvent::Drop) {
        // Only files of this machine have paths a form can use.
        clStringList paths;
        for (const QUrl& url : static_cast<QDropEvent*>(event)->mimeData()->urls()) {
            if (url.isLocalFile()) paths.Add(FromQString(QDir::toNativeSeparators(url.toLocalFile())));
        }
        if (paths.Count() > 0) RouteMessage(this, kWmDropFiles, reinterpret_cast<uintptr_t>(&paths), 0);
        event->accept();
        return true;
    }
    if (type == QEvent::Paint || type == QEvent::Timer || type == QEvent::Close) return QWidget::event(event);
    clQtMessage messages[2];
    int count = Translate(this, event, messages);
    bool useDefault = true;
    for (int i = 0; i < count && alive; ++i) {
        bool wantsDefault = true;
        Route(messages[i].message, messages[i].wParam, messages[i].lParam, &wantsDefault);
        if (!wantsDefault) useDefault = false;
    }
    bool fact = type == QEvent::Resize || type == QEvent::Move || type == QEvent::Show || type == QEvent::Hide ||
                type == QEvent::WindowActivate || type == QEvent::WindowDeactivate;
    if (useDefault || fact || count == 0) return QWidget::event(event);
    event->accept();
    return true;
}

void clQtWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    clQtCanvas canvas(painter);
    bool useDefault = true;
    Route(kWmEraseBackground, reinterpret_cast<uintptr_t>(&canvas), 0, &useDefault);
    if (useDefault) painter.fillRect(rect(), palette().window());
    Route(kWmPaint, reinterpret_cast<uintptr_t>(&canvas), 0, &useDefault);
}

void clQtWindow::timerEvent(QTimerEvent* event) {
    auto found = timerIds.find(event->timerId());
    if (found == timerIds.end()) return;
    bool useDefault = true;
    Route(kWmTimer, static_cast<uintptr_t>(found.value()), 0, &useDefault);
}

void clQtWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    RouteMessage(this, kWmClose, 0, 0);
}

clQtListBox::clQtListBox(QWidget* parent) : QAbstractScrollArea(parent) {
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    verticalScrollBar()->setSingleStep(20);
}

int clQtListBox::RowTop(int index) const {
    int top = 0;
    for (int i = 0; i < index && i < rows.size(); ++i) top += rows[i].height;
    return top;
}

int clQtListBox::RowAt(int y) const {
    int top = -verticalScrollBar()->value();
    for (int i = 0; i < rows.size(); ++i) {
        if (y >= top && y < top + rows[i].height) return i;
        top += rows[i].height;
    }
    return -1;
}

QRect clQtListBox::RowRect(int index) const {
    if (index < 0 || index >= rows.size()) return QRect();
    return QRect(0, RowTop(index) - verticalScrollBar()->value(), viewport()->width(), rows[index].height);
}

void clQtListBox::UpdateScrollRange() {
    int total = RowTop(static_cast<int>(rows.size()));
    verticalScrollBar()->setRange(0, qMax(0, total - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    viewport()->update();
}

void clQtListBox::Select(int index, bool notify) {
    if (index < -1 || index >= rows.size()) index = -1;
    selected = index;
    EnsureVisible(index);
    viewport()->update();
    if (notify) {
        RouteMessage(parentWidget(), kWmCommand, clMakeWParam(ControlIdOf(this), kLbnSelChange),
                     reinterpret_cast<intptr_t>(HandleOf(this)));
    }
}

void clQtListBox::EnsureVisible(int index) {
    if (index < 0 || index >= rows.size()) return;
    int top = RowTop(index), bottom = top + rows[index].height;
    int value = verticalScrollBar()->value();
    if (top < value) verticalScrollBar()->setValue(top);
    else if (bottom > value + viewport()->height()) verticalScrollBar()->setValue(bottom - viewport()->height());
}

int clQtListBox::TopIndex() const {
    int row = RowAt(0);
    return row < 0 ? 0 : row;
}

void clQtListBox::SetTopIndex(int index) {
    if (index < 0 || index >= rows.size()) return;
    verticalScrollBar()->setValue(RowTop(index));
    viewport()->update();
}

void clQtListBox::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    clQtCanvas canvas(painter);
    painter.fillRect(viewport()->rect(), Qt::white);
    for (int i = 0; i < rows.size(); ++i) {
        QRect area = RowRect(i);
        if (area.bottom() < 0) continue;
        if (area.top() > viewport()->height()) break;
        clDrawItem item;
        item.controlId = ControlIdOf(this);
        item.itemId = i;
        item.itemState = i == selected ? kOdsSelected : 0;
        item.item = HandleOf(this);
        item.canvas = &canvas;
        item.rect = clRect::Sized(area.x(), area.y(), area.width(), area.height());
        item.itemData = rows[i].data;
        painter.save();
        painter.setClipRect(area);
        RouteMessage(parentWidget(), kWmDrawItem, item.controlId, reinterpret_cast<intptr_t>(&item));
        painter.restore();
    }
}

void clQtListBox::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    UpdateScrollRange();
}

void clQtListBox::mousePressEvent(QMouseEvent* event) {
    int row = RowAt(event->position().toPoint().y());
    if (row >= 0) Select(row, true);
}

void clQtListBox::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Up && selected > 0) {
        Select(selected - 1, true);
    } else if (event->key() == Qt::Key_Down && selected + 1 < rows.size()) {
        Select(selected + 1, true);
    } else {
        QAbstractScrollArea::keyPressEvent(event);
    }
}

bool BackendRegisterClass(const clString& className) {
    QString name = ToQString(className);
    if (classNames.contains(name)) return false;
    classNames.insert(name);
    return true;
}

void BackendUnregisterClass(const clString& className) { classNames.remove(ToQString(className)); }

clWindowHandle BackendCreateWindow(XWindow* owner, const clString& className, const clString& title,
                                   const clRect& rect, uint32_t style, uint32_t exStyle, clWindowHandle parent) {
    if (QApplication::instance() == nullptr) return nullptr;
    Qt::WindowFlags flags = Qt::Widget;
    if ((style & kWsChild) == 0) {
        flags = Qt::Window;
        if ((style & kWsCaption) != kWsCaption) flags |= Qt::FramelessWindowHint;
        if ((exStyle & kWsExToolWindow) != 0) flags |= Qt::Tool;
        if ((exStyle & kWsExTopmost) != 0) flags |= Qt::WindowStaysOnTopHint;
    }
    auto* window = new clQtWindow(WidgetOf(parent), flags);
    TrackWidget(window);
    window->setProperty("qvClass", ToQString(className));
    window->setMouseTracking(true);
    window->setFocusPolicy(Qt::StrongFocus);
    window->setWindowTitle(ToQString(title));
    window->setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
    if ((style & kWsDisabled) != 0) window->setEnabled(false);
    bool useDefault = true;
    XWindow::Procedure(HandleOf(window), kWmCreate, 0, 0, owner, &useDefault);
    if ((style & kWsVisible) != 0 && window->alive) window->show();
    return HandleOf(window);
}

void BackendDestroyWindow(clWindowHandle handle) {
    auto* window = dynamic_cast<clQtWindow*>(WidgetOf(handle));
    if (window == nullptr || !window->alive) return;
    bool useDefault = true;
    window->Route(kWmDestroy, 0, 0, &useDefault);
    window->alive = false;
    for (int id : window->timerIds.keys()) window->killTimer(id);
    window->timerIds.clear();
    window->hide();
    window->deleteLater();
}

bool BackendSetTimer(clWindowHandle handle, uint64_t id, uint32_t milliseconds) {
    auto* window = dynamic_cast<clQtWindow*>(WidgetOf(handle));
    if (window == nullptr || !window->alive) return false;
    BackendKillTimer(handle, id);
    int qtId = window->startTimer(static_cast<int>(milliseconds), Qt::PreciseTimer);
    if (qtId == 0) return false;
    window->timerIds.insert(qtId, id);
    return true;
}

void BackendKillTimer(clWindowHandle handle, uint64_t id) {
    auto* window = dynamic_cast<clQtWindow*>(WidgetOf(handle));
    if (window == nullptr) return;
    for (auto entry = window->timerIds.begin(); entry != window->timerIds.end();) {
        if (entry.value() == id) {
            window->killTimer(entry.key());
            entry = window->timerIds.erase(entry);
        } else {
            ++entry;
        }
    }
}

void BackendSetPosition(clWindowHandle handle, int32_t x, int32_t y, int32_t width, int32_t height, bool move,
                        bool resize) {
    QWidget* widget = WidgetOf(handle);
    if (widget == nullptr) return;
    if (move) widget->move(x, y);
    if (resize) widget->resize(width, height);
}

bool BackendAttachSubclass(clWindowHandle control, XSubClassCtrl* object) {
    QWidget* widget = WidgetOf(control);
    if (widget == nullptr) return false;
    subclasses.insert(widget, clSubclassEntry{object, widget});
    widget->installEventFilter(Filter());
    widget->setMouseTracking(true);
    if (auto* area = dynamic_cast<QAbstractScrollArea*>(widget)) {
        QWidget* viewport = area->viewport();
        subclasses.insert(viewport, clSubclassEntry{object, widget});
        viewport->installEventFilter(Filter());
        QObject::connect(viewport, &QObject::destroyed, [viewport](QObject*) { subclasses.remove(viewport); });
    }
    object->previousProcedure = widget;
    return true;
}

void BackendDetachSubclass(clWindowHandle control, XSubClassCtrl* object) {
    auto* widget = reinterpret_cast<QWidget*>(control);
    for (auto entry = subclasses.begin(); entry != subclasses.end();) {
        if (entry.value().object == object && entry.value().control == widget) {
            entry.key()->removeEventFilter(Filter());
            entry = subclasses.erase(entry);
        } else {
            ++entry;
        }
    }
}

// Qt has no procedure to call with a made-up message: the widget's own
// handling of real events runs when the subclass leaves them alone.
intptr_t BackendCallPrevious(XSubClassCtrl*, clWindowHandle control, uint32_t message, uintptr_t wParam,
                             intptr_t lParam) {
    return BackendDefaultHandling(control, message, wParam, lParam);
}
