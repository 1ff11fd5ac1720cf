// The Qt back end's process-wide side: the application object, message
// loops, the screen, questions, popup menus and the clipboard.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFont>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSocketNotifier>
#include <QVector>

#include "foundation/platform/display.h"
#include "toolkit/application.h"
#include "toolkit/controls.h"
#include "toolkit/qt/qtcanvas.h"
#include "toolkit/qt/qtwidgets.h"

namespace {

QVector<QEventLoop*> loops;
clMenuHandler menuHandler = nullptr;
void* menuContext = nullptr;
// ToolkitWatch's descriptors, each with a notifier of its own.
QVector<QSocketNotifier*> watchers;

void EndWatch() {
    for (QSocketNotifier* watcher : watchers) {
        watcher->setEnabled(false);
        // It may be the one whose signal runs now.
        watcher->deleteLater();
    }
    watchers.clear();
}

}  // namespace

bool ToolkitHasDisplay() { return PlatformHasDisplay(); }

bool ToolkitStartWith(XMainThreadSync* sync) {
    if (QApplication::instance() == nullptr) {
        if (!ToolkitHasDisplay()) return false;
        static int argc = 1;
        static char name[] = "TrackConverter";
        static char* argv[] = {name, nullptr};
        new QApplication(argc, argv);
        // The forms ask for "Tahoma"; this is the face that stands in for it.
        QFont::insertSubstitution(QStringLiteral("Tahoma"), QStringLiteral("DejaVu Sans"));
        QApplication::setQuitOnLastWindowClosed(false);
    }
    if (sync != nullptr) {
        sync->SetWake([sync]() {
            return QMetaObject::invokeMethod(
                qApp, [sync]() { sync->RunPending(); }, Qt::QueuedConnection);
        });
    }
    return true;
}

int32_t ToolkitRunLoop() {
    QEventLoop loop;
    loops.push_back(&loop);
    int code = loop.exec();
    loops.removeOne(&loop);
    return code;
}

void ToolkitEndLoop(int32_t code) {
    if (!loops.isEmpty()) loops.back()->exit(code);
}

void ToolkitProcessPending() {
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ToolkitProcessFor(uint32_t milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents,
                                        static_cast<int>(milliseconds - clock.elapsed()));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void ToolkitWatch(clWindowHandle window, const intptr_t* waitables, int32_t count, uint32_t message) {
    EndWatch();
    for (int32_t i = 0; i < count; ++i) {
        if (waitables[i] < 0) continue;
        auto* watcher = new QSocketNotifier(static_cast<qintptr>(waitables[i]), QSocketNotifier::Read);
        QObject::connect(watcher, &QSocketNotifier::activated, watcher, [window, message]() {
            EndWatch();
            WindowPost(window, message, 0, 0);
        });
        watchers.push_back(watcher);
    }
}

clRect ToolkitWorkArea() {
    QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return clRect{0, 0, 1024, 768};
    QRect area = screen->availableGeometry();
    return clRect::Sized(area.x(), area.y(), area.width(), area.height());
}

int32_t ToolkitScreenDpi() {
    QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? static_cast<int32_t>(screen->logicalDotsPerInchX()) : 96;
}

bool ToolkitForeignWindowRect(int64_t, clRect&) { return false; }

bool ToolkitMonitorAt(int32_t x, int32_t y) { return QGuiApplication::screenAt(QPoint(x, y)) != nullptr; }

int32_t ToolkitMessageBox(clWindowHandle owner, const clString& text, const clString& caption, uint32_t type) {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    switch (type & 0xF0) {
        case 0x10: icon = QMessageBox::Critical; break;
        case 0x20: icon = QMessageBox::Question; break;
        case 0x30: icon = QMessageBox::Warning; break;
        case 0x40: icon = QMessageBox::Information; break;
        default: break;
    }
    QMessageBox box(icon, ToQString(caption), ToQString(text), QMessageBox::NoButton, WidgetOf(owner));
    if ((type & 0x40000) != 0) box.setWindowFlag(Qt::WindowStaysOnTopHint);
    struct Choice {
        const char16_t* label;
        int32_t id;
        QMessageBox::ButtonRole role;
    };
    QVector<Choice> choices;
    switch (type & 0xF) {
        case 1: choices = {{u"OK", 1, QMessageBox::AcceptRole}, {u"Cancel", 2, QMessageBox::RejectRole}}; break;
        case 2:
            choices = {{u"Abort", 3, QMessageBox::RejectRole},
                       {u"Retry", 4, QMessageBox::AcceptRole},
                       {u"Ignore", 5, QMessageBox::AcceptRole}};
            break;
        case 3:
            choices = {{u"Yes", 6, QMessageBox::YesRole},
                       {u"No", 7, QMessageBox::NoRole},
                       {u"Cancel", 2, QMessageBox::RejectRole}};
            break;
        case 4: choices = {{u"Yes", 6, QMessageBox::YesRole}, {u"No", 7, QMessageBox::NoRole}}; break;
        case 5: choices = {{u"Retry", 4, QMessageBox::AcceptRole}, {u"Cancel", 2, QMessageBox::RejectRole}}; break;
        default: choices = {{u"OK", 1, QMessageBox::AcceptRole}}; break;
    }
    QVector<QAbstractButton*> buttons;
    for (const Choice& choice : choices) {
        buttons.push_back(box.addButton(QString::fromUtf16(choice.label), choice.role));
    }
    box.setDefaultButton(static_cast<QPushButton*>(buttons.front()));
    box.exec();
    for (int i = 0; i < buttons.size(); ++i) {
        if (box.clickedButton() == buttons[i]) return choices[i].id;
    }
    // Closed by the window's own close: the safe answer of the question.
    return (type & 0xF) == 0 ? 1 : (type & 0xF) == 4 ? 7 : 2;
}

static void FillMenu(QMenu& target, const clMenu& menu) {
    for (int64_t i = 0; i < menu.Count(); ++i) {
        const clMenuItem& item = menu[i];
        if (item.submenu != nullptr) {
            QMenu* sub = target.addMenu(ToQString(item.text));
            FillMenu(*sub, *item.submenu);
            sub->setEnabled(item.enabled);
            continue;
        }
        if (item.text.IsEmpty()) {
            target.addSeparator();
            continue;
        }
        QAction* action = target.addAction(ToQString(item.text));
        action->setData(static_cast<unsigned>(item.id));
        action->setCheckable(item.checked);
        action->setChecked(item.checked);
        action->setEnabled(item.enabled);
    }
}

uint32_t clMenu::TrackPopup(clWindowHandle owner, int32_t x, int32_t y) const {
    if (menuHandler != nullptr) return menuHandler(*this, menuContext);
    QMenu menu(WidgetOf(owner));
    FillMenu(menu, *this);
    QAction* chosen = menu.exec(QPoint(x, y));
    return chosen != nullptr ? chosen->data().toUInt() : 0;
}

void SetMenuHandler(clMenuHandler handler, void* context) {
    menuHandler = handler;
    menuContext = context;
}

bool KeyIsDown(uint32_t virtualKey) {
    Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
    if (virtualKey == kVkShift) return (held & Qt::ShiftModifier) != 0;
    if (virtualKey == kVkControl) return (held & Qt::ControlModifier) != 0;
    return false;
}

bool ClipboardSetText(const clString& text) {
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (clipboard == nullptr) return false;
    clipboard->setText(ToQString(text));
    return true;
}

clString ClipboardGetText() {
    QClipboard* clipboard = QGuiApplication::clipboard();
    return clipboard != nullptr ? FromQString(clipboard->text()) : clString();
}

// The taskbar button's progress exists on Windows only.
void TaskbarSetProgress(clWindowHandle, uint64_t, uint64_t) {}
void TaskbarSetState(clWindowHandle, int32_t) {}
