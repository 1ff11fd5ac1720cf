// The Qt back end's controls and the operations on any window.
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QCursor>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QPainter>
#include <QTabBar>

#include <algorithm>
#include <QTextCursor>

#include "toolkit/controls.h"
#include "toolkit/qt/qtcanvas.h"
#include "toolkit/qt/qtwidgets.h"

namespace {

// A tab row over an area for its pages: a bar on top and a frame below.
class clQtTabs : public QWidget {
public:
    QTabBar* bar;
    explicit clQtTabs(QWidget* parent) : QWidget(parent), bar(new QTabBar(this)) { bar->setDrawBase(false); }

protected:
    void resizeEvent(QResizeEvent*) override { bar->setGeometry(0, 0, width(), bar->sizeHint().height()); }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        int top = bar->sizeHint().height();
        painter.setPen(QColor(0xAD, 0xAD, 0xAD));
        painter.drawRect(0, top, width() - 1, height() - top - 1);
    }
};

// The rows of a painted combo box's list: each row goes to the combo's
// own handling as kWmDrawItem; what nobody paints Qt paints.
class clQtRowDelegate : public QStyledItemDelegate {
public:
    QComboBox* combo;
    clQtRowDelegate(QComboBox* owner) : QStyledItemDelegate(owner), combo(owner) {}
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        clQtCanvas canvas(*painter);
        clDrawItem item;
        item.controlId = ControlIdOf(combo);
        item.itemId = index.row();
        item.itemState = (option.state & QStyle::State_Selected) != 0 ? kOdsSelected : 0;
        item.item = HandleOf(combo);
        item.canvas = &canvas;
        item.rect = clRect::Sized(option.rect.x(), option.rect.y(), option.rect.width(), option.rect.height());
        painter->save();
        painter->setClipRect(option.rect);
        intptr_t painted = RouteMessage(combo, kWmDrawItem, item.controlId, reinterpret_cast<intptr_t>(&item));
        painter->restore();
        if (painted == 0) QStyledItemDelegate::paint(painter, option, index);
    }
};

QTabBar* TabBarOf(QWidget* widget) {
    if (auto* tabs = dynamic_cast<clQtTabs*>(widget)) return tabs->bar;
    return nullptr;
}

void Notify(QWidget* control, uint32_t code) {
    RouteMessage(ToolkitParentOf(control), kWmCommand, clMakeWParam(ControlIdOf(control), code),
                 reinterpret_cast<intptr_t>(HandleOf(control)));
}

// A text's "&&" is one "&", and a lone "&" marks a key, as in a Win32
// static text; a QLabel shows every "&" as it is.
QString LabelText(const QString& text) {
    QString shown;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == u'&' && i + 1 < text.size()) ++i;
        shown.append(text[i]);
    }
    return shown;
}

QLineEdit* LineEditOf(QWidget* widget) {
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) return edit;
    if (auto* combo = qobject_cast<QComboBox*>(widget)) return combo->lineEdit();
    return nullptr;
}

}  // namespace

// A list's editors live in its viewport but report to the list.
QWidget* ToolkitParentOf(QWidget* widget) {
    QVariant owner = widget->property("qvParent");
    if (owner.isValid()) return static_cast<QWidget*>(owner.value<void*>());
    return widget->parentWidget();
}

clWindowHandle CreateControl(clControlKind kind, clWindowHandle parent, uint32_t id, const clString& text,
                             const clRect& rect) {
    QWidget* owner = WidgetOf(parent);
    if (owner == nullptr) return nullptr;
    QWidget* host = owner;
    if (auto* list = dynamic_cast<clQtListBox*>(owner)) host = list->viewport();
    if (auto* view = dynamic_cast<QAbstractItemView*>(owner)) host = view->viewport();
    QWidget* control = nullptr;
    QString caption = ToQString(text);
    switch (kind) {
        case kControlStatic: control = new QLabel(LabelText(caption), host); break;
        case kControlButton:
        case kControlPaintedButton: {
            auto* button = new QPushButton(caption, host);
            QObject::connect(button, &QPushButton::clicked, button, [button]() { Notify(button, kBnClicked); });
            control = button;
            break;
        }
        case kControlCheckBox: {
            auto* box = new QCheckBox(caption, host);
            QObject::connect(box, &QCheckBox::clicked, box, [box]() { Notify(box, kBnClicked); });
            control = box;
            break;
        }
        case kControlEdit: {
            auto* edit = new QLineEdit(caption, host);
            QObject::connect(edit, &QLineEdit::textChanged, edit, [edit]() { Notify(edit, kEnChange); });
            control = edit;
            break;
        }
        case kControlMultiLineEdit: {
            auto* edit = new QPlainTextEdit(caption, host);
            edit->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
            QObject::connect(edit, &QPlainTextEdit::textChanged, edit, [edit]() { Notify(edit, kEnChange); });
            control = edit;
            break;
        }
        case kControlComboBox:
        case kControlPaintedComboBox:
        case kControlDropList: {
            auto* combo = new QComboBox(host);
            combo->setEditable(kind != kControlDropList);
            if (kind == kControlPaintedComboBox) combo->setItemDelegate(new clQtRowDelegate(combo));
            if (kind != kControlDropList) {
                // Own completion rules belong to the toolkit's drop list;
                // Qt's completer would keep the typed case.
                combo->setCompleter(nullptr);
                combo->setEditText(caption);
                QObject::connect(combo->lineEdit(), &QLineEdit::textEdited, combo,
                                 [combo]() { Notify(combo, kCbnEditChange); });
            }
            QObject::connect(combo, &QComboBox::activated, combo, [combo]() { Notify(combo, kCbnSelChange); });
            control = combo;
            break;
        }
        case kControlListBox: control = new clQtListBox(host); break;
        case kControlListView:
        case kControlTreeView: control = CreateQtView(kind == kControlTreeView, host); break;
        case kControlTabs: {
            auto* tabs = new clQtTabs(host);
            QObject::connect(tabs->bar, &QTabBar::currentChanged, tabs, [tabs]() { Notify(tabs, kCbnSelChange); });
            control = tabs;
            break;
        }
    }
    if (control == nullptr) return nullptr;
    TrackWidget(control);
    if (auto* combo = qobject_cast<QComboBox*>(control); combo != nullptr && combo->lineEdit() != nullptr) {
        TrackWidget(combo->lineEdit());
    }
    control->setProperty("qvId", static_cast<unsigned>(id));
    if (host != owner) control->setProperty("qvParent", QVariant::fromValue(static_cast<void*>(owner)));
    control->setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
    control->setFont(ToQFont(clFontSpec{}));
    control->show();
    return HandleOf(control);
}

void DestroyControl(clWindowHandle control) {
    QWidget* widget = WidgetOf(control);
    if (widget == nullptr) return;
    widget->hide();
    widget->setProperty("qvId", QVariant());
    widget->deleteLater();
}

void WindowSetText(clWindowHandle window, const clString& text) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    QString value = ToQString(text);
    if (auto* label = qobject_cast<QLabel*>(widget)) label->setText(LabelText(value));
    else if (auto* button = qobject_cast<QAbstractButton*>(widget)) button->setText(value);
    else if (auto* edit = qobject_cast<QLineEdit*>(widget)) edit->setText(value);
    else if (auto* lines = qobject_cast<QPlainTextEdit*>(widget)) lines->setPlainText(value);
    else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
        if (combo->isEditable()) combo->setEditText(value);
    } else widget->setWindowTitle(value);
}

clString WindowGetText(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return clString();
    if (auto* label = qobject_cast<QLabel*>(widget)) return FromQString(label->text());
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) return FromQString(button->text());
    if (auto* edit = qobject_cast<QLineEdit*>(widget)) return FromQString(edit->text());
    if (auto* lines = qobject_cast<QPlainTextEdit*>(widget)) return FromQString(lines->toPlainText());
    if (auto* combo = qobject_cast<QComboBox*>(widget)) return FromQString(combo->currentText());
    return FromQString(widget->windowTitle());
}

void WindowSetFont(clWindowHandle window, const clFontSpec& font) {
    if (QWidget* widget = WidgetOf(window)) widget->setFont(ToQFont(font));
}

void WindowEnable(clWindowHandle window, bool enable) {
    if (QWidget* widget = WidgetOf(window)) widget->setEnabled(enable);
}

bool WindowIsEnabled(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    return widget != nullptr && widget->isEnabled();
}

void WindowShow(clWindowHandle window, bool show) {
    if (QWidget* widget = WidgetOf(window)) widget->setVisible(show);
}

bool WindowIsVisible(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    return widget != nullptr && widget->isVisible();
}

bool WindowIsMinimized(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    return widget != nullptr && (widget->isMinimized() || widget->isMaximized());
}

void WindowMove(clWindowHandle window, const clRect& rect) {
    if (QWidget* widget = WidgetOf(window)) widget->setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
}

clRect WindowScreenRect(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return clRect{};
    QPoint corner = widget->isWindow() ? widget->pos() : widget->mapToGlobal(QPoint(0, 0));
    return clRect::Sized(corner.x(), corner.y(), widget->width(), widget->height());
}

clRect WindowClientRect(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return clRect{};
    if (auto* area = dynamic_cast<QAbstractScrollArea*>(widget)) {
        // Until the list first shows, its viewport keeps Qt's default size:
        // the resize that places it waits for the show. The frame's inside
        // is right already, and is what the viewport will be.
        if (area->testAttribute(Qt::WA_PendingResizeEvent) || !area->isVisible()) {
            QRect inside = area->contentsRect();
            return clRect{0, 0, inside.width(), inside.height()};
        }
        widget = area->viewport();
    }
    return clRect{0, 0, widget->width(), widget->height()};
}

// A list box's client area is its viewport, inside the frame.
static QWidget* ClientOf(QWidget* widget) {
    if (auto* area = dynamic_cast<QAbstractScrollArea*>(widget)) return area->viewport();
    return widget;
}

clPoint WindowFromScreen(clWindowHandle window, clPoint point) {
    QWidget* widget = ClientOf(WidgetOf(window));
    if (widget == nullptr) return point;
    QPoint local = widget->mapFromGlobal(QPoint(point.x, point.y));
    return clPoint{local.x(), local.y()};
}

clPoint WindowToScreen(clWindowHandle window, clPoint point) {
    QWidget* widget = ClientOf(WidgetOf(window));
    if (widget == nullptr) return point;
    QPoint global = widget->mapToGlobal(QPoint(point.x, point.y));
    return clPoint{global.x(), global.y()};
}

clWindowHandle WindowParent(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr || widget->isWindow()) return nullptr;
    return HandleOf(ToolkitParentOf(widget));
}

uint32_t WindowId(clWindowHandle window) { return ControlIdOf(WidgetOf(window)); }

clWindowHandle WindowChild(clWindowHandle parent, uint32_t id) {
    QWidget* widget = WidgetOf(parent);
    if (widget == nullptr) return nullptr;
    for (QWidget* child : widget->findChildren<QWidget*>()) {
        if (ControlIdOf(child) == id && child->property("qvId").isValid()) return HandleOf(child);
    }
    return nullptr;
}

void WindowInvalidate(clWindowHandle window, const clRect* rect) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    if (auto* area = dynamic_cast<QAbstractScrollArea*>(widget)) widget = area->viewport();
    if (rect == nullptr) widget->update();
    else widget->update(rect->left, rect->top, rect->Width(), rect->Height());
}

void WindowUpdate(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    if (auto* area = dynamic_cast<QAbstractScrollArea*>(widget)) widget = area->viewport();
    widget->repaint();
}

void WindowPlaceAfter(clWindowHandle window, clWindowHandle previous) {
    QWidget* widget = WidgetOf(window);
    QWidget* before = WidgetOf(previous);
    if (widget != nullptr && before != nullptr) QWidget::setTabOrder(before, widget);
}

clWindowHandle WindowNextInTabOrder(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return nullptr;
    for (QWidget* next = widget->nextInFocusChain(); next != nullptr && next != widget;
         next = next->nextInFocusChain()) {
        if ((next->focusPolicy() & Qt::TabFocus) != 0 && next->isEnabled() && next->isVisibleTo(widget->window()) &&
            !widget->isAncestorOf(next)) {
            return HandleOf(next);
        }
    }
    return nullptr;
}

void WindowFocusNext(clWindowHandle window) {
    if (QWidget* next = WidgetOf(WindowNextInTabOrder(window))) next->setFocus(Qt::TabFocusReason);
}

clWindowHandle WindowAtPoint(clPoint point) { return HandleOf(QApplication::widgetAt(QPoint(point.x, point.y))); }

void WindowSetOpacity(clWindowHandle window, int32_t alpha) {
    if (QWidget* widget = WidgetOf(window)) widget->setWindowOpacity(std::clamp(alpha, 0, 255) / 255.0);
}

clRect TabDisplayArea(clWindowHandle tabs) {
    auto* widget = dynamic_cast<clQtTabs*>(WidgetOf(tabs));
    if (widget == nullptr) return clRect{};
    QRect place = widget->geometry();
    int top = widget->bar->sizeHint().height();
    return clRect{place.x() + 1, place.y() + top + 1, place.x() + place.width() - 1, place.y() + place.height() - 1};
}

void WindowBringToTop(clWindowHandle window) {
    if (QWidget* widget = WidgetOf(window)) widget->raise();
}

void WindowSetFocus(clWindowHandle window) {
    if (QWidget* widget = WidgetOf(window)) widget->setFocus(Qt::OtherFocusReason);
}

clWindowHandle WindowWithFocus() { return HandleOf(QApplication::focusWidget()); }

void WindowCaptureMouse(clWindowHandle window) {
    if (QWidget* widget = WidgetOf(window)) widget->grabMouse();
}

void WindowReleaseMouse() {
    if (QWidget* grabber = QWidget::mouseGrabber()) grabber->releaseMouse();
}

clPoint CursorPosition() {
    QPoint at = QCursor::pos();
    return clPoint{at.x(), at.y()};
}

intptr_t WindowSend(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    return RouteMessage(WidgetOf(window), message, wParam, lParam);
}

void WindowPost(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    QPointer<QWidget> target(WidgetOf(window));
    if (target.isNull()) return;
    QMetaObject::invokeMethod(
        target.data(),
        [target, message, wParam, lParam]() {
            if (!target.isNull()) RouteMessage(target.data(), message, wParam, lParam);
        },
        Qt::QueuedConnection);
}

clImageHandle WindowGrab(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr || widget->width() <= 0 || widget->height() <= 0) return nullptr;
    QImage image = widget->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    return reinterpret_cast<clImageHandle>(new clQtImage{image});
}

void WindowSetIcon(clWindowHandle window, clImageHandle icon) {
    QWidget* widget = WidgetOf(window);
    clQtImage* picture = QtImageOf(icon);
    if (widget != nullptr && picture != nullptr) widget->setWindowIcon(QIcon(QPixmap::fromImage(picture->image)));
}

void EditSetSelection(clWindowHandle edit, int32_t start, int32_t end) {
    QWidget* widget = WidgetOf(edit);
    if (QLineEdit* line = LineEditOf(widget)) {
        int length = static_cast<int>(line->text().size());
        if (start < 0) {
            line->deselect();
            line->setCursorPosition(length);
            return;
        }
        int last = end < 0 || end > length ? length : end;
        line->setSelection(start, last - start);
    } else if (auto* lines = qobject_cast<QPlainTextEdit*>(widget)) {
        // As Win32's edits: -1 as the start takes the selection away and
        // puts the caret at the end; -1 as the end runs to the end.
        QTextCursor cursor = lines->textCursor();
        cursor.movePosition(QTextCursor::End);
        int length = cursor.position();
        if (start < 0) {
            lines->setTextCursor(cursor);
            return;
        }
        int first = std::min(static_cast<int>(start), length);
        int last = end < 0 || end > length ? length : static_cast<int>(end);
        cursor.setPosition(first);
        cursor.setPosition(std::max(first, last), QTextCursor::KeepAnchor);
        lines->setTextCursor(cursor);
    }
}

void EditGetSelection(clWindowHandle edit, int32_t& start, int32_t& end) {
    start = end = 0;
    if (QLineEdit* line = LineEditOf(WidgetOf(edit))) {
        if (line->hasSelectedText()) {
            start = line->selectionStart();
            end = start + static_cast<int32_t>(line->selectedText().size());
        } else {
            start = end = line->cursorPosition();
        }
    } else if (auto* lines = qobject_cast<QPlainTextEdit*>(WidgetOf(edit))) {
        QTextCursor cursor = lines->textCursor();
        start = cursor.selectionStart();
        end = cursor.selectionEnd();
    }
}

void EditReplaceSelection(clWindowHandle edit, const clString& text) {
    if (QLineEdit* line = LineEditOf(WidgetOf(edit))) {
        line->insert(ToQString(text));
    } else if (auto* lines = qobject_cast<QPlainTextEdit*>(WidgetOf(edit))) {
        lines->insertPlainText(ToQString(text));
    }
}

int32_t ComboAddItem(clWindowHandle combo, const clString& text) {
    QWidget* widget = WidgetOf(combo);
    if (auto* box = qobject_cast<QComboBox*>(widget)) {
        QString edit = box->isEditable() ? box->currentText() : QString();
        box->addItem(ToQString(text));
        if (box->isEditable()) box->setEditText(edit);
        return box->count() - 1;
    }
    if (QTabBar* tabs = TabBarOf(widget)) return tabs->addTab(ToQString(text));
    return -1;
}

void TabsSetItemImage(clWindowHandle tabs, int32_t index, clImageHandle image, int32_t size) {
    QTabBar* bar = TabBarOf(WidgetOf(tabs));
    clQtImage* picture = QtImageOf(image);
    if (bar == nullptr || picture == nullptr) return;
    bar->setIconSize(QSize(size, size));
    bar->setTabIcon(index, QIcon(QPixmap::fromImage(
                               picture->image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation))));
}

void CheckBoxSet(clWindowHandle box, bool checked) {
    if (auto* check = qobject_cast<QCheckBox*>(WidgetOf(box))) check->setChecked(checked);
}

bool CheckBoxIsChecked(clWindowHandle box) {
    auto* check = qobject_cast<QCheckBox*>(WidgetOf(box));
    return check != nullptr && check->isChecked();
}

int32_t ComboInsertItem(clWindowHandle combo, int32_t index, const clString& text) {
    auto* box = qobject_cast<QComboBox*>(WidgetOf(combo));
    if (box == nullptr) return -1;
    if (index < 0 || index > box->count()) index = box->count();
    QString edit = box->isEditable() ? box->currentText() : QString();
    box->insertItem(index, ToQString(text));
    if (box->isEditable()) box->setEditText(edit);
    return index;
}

void ComboDeleteItem(clWindowHandle combo, int32_t index) {
    if (auto* box = qobject_cast<QComboBox*>(WidgetOf(combo))) box->removeItem(index);
}

void ComboClear(clWindowHandle combo) {
    if (auto* box = qobject_cast<QComboBox*>(WidgetOf(combo))) box->clear();
}

int32_t ComboCount(clWindowHandle combo) {
    QWidget* widget = WidgetOf(combo);
    if (auto* box = qobject_cast<QComboBox*>(widget)) return box->count();
    if (QTabBar* tabs = TabBarOf(widget)) return tabs->count();
    return 0;
}

clString ComboItemText(clWindowHandle combo, int32_t index) {
    QWidget* widget = WidgetOf(combo);
    if (auto* box = qobject_cast<QComboBox*>(widget)) return FromQString(box->itemText(index));
    if (QTabBar* tabs = TabBarOf(widget)) return FromQString(tabs->tabText(index));
    return clString();
}

int32_t ComboGetSelection(clWindowHandle combo) {
    QWidget* widget = WidgetOf(combo);
    if (auto* box = qobject_cast<QComboBox*>(widget)) return box->currentIndex();
    if (QTabBar* tabs = TabBarOf(widget)) return tabs->currentIndex();
    return -1;
}

void ComboSetSelection(clWindowHandle combo, int32_t index) {
    QWidget* widget = WidgetOf(combo);
    if (auto* box = qobject_cast<QComboBox*>(widget)) box->setCurrentIndex(index);
    if (QTabBar* tabs = TabBarOf(widget)) tabs->setCurrentIndex(index);
}

clWindowHandle ComboEdit(clWindowHandle combo) {
    auto* box = qobject_cast<QComboBox*>(WidgetOf(combo));
    return box != nullptr && box->isEditable() ? HandleOf(box->lineEdit()) : nullptr;
}

static clQtListBox* ListOf(clWindowHandle list) { return dynamic_cast<clQtListBox*>(WidgetOf(list)); }

int32_t ListInsertRow(clWindowHandle list, int32_t index, uint64_t itemData) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr) return -1;
    if (index < 0 || index > box->rows.size()) index = static_cast<int32_t>(box->rows.size());
    clQtListBox::Row row;
    row.data = itemData;
    box->rows.insert(index, row);
    if (box->selected >= index) ++box->selected;
    box->UpdateScrollRange();
    return index;
}

void ListDeleteRow(clWindowHandle list, int32_t index) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr || index < 0 || index >= box->rows.size()) return;
    box->rows.remove(index);
    if (box->selected == index) box->selected = -1;
    else if (box->selected > index) --box->selected;
    box->UpdateScrollRange();
}

void ListClear(clWindowHandle list) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr) return;
    box->rows.clear();
    box->selected = -1;
    box->UpdateScrollRange();
}

int32_t ListCount(clWindowHandle list) {
    clQtListBox* box = ListOf(list);
    return box != nullptr ? static_cast<int32_t>(box->rows.size()) : 0;
}

void ListSetRowHeight(clWindowHandle list, int32_t index, int32_t height) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr || index < 0 || index >= box->rows.size()) return;
    box->rows[index].height = height;
    box->UpdateScrollRange();
}

int32_t ListRowHeight(clWindowHandle list, int32_t index) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr || index < 0 || index >= box->rows.size()) return 0;
    return box->rows[index].height;
}

int32_t ListGetSelection(clWindowHandle list) {
    clQtListBox* box = ListOf(list);
    return box != nullptr ? box->selected : -1;
}

void ListSetSelection(clWindowHandle list, int32_t index) {
    if (clQtListBox* box = ListOf(list)) box->Select(index, false);
}

int32_t ListTopIndex(clWindowHandle list) {
    clQtListBox* box = ListOf(list);
    return box != nullptr ? box->TopIndex() : 0;
}

void ListSetTopIndex(clWindowHandle list, int32_t index) {
    if (clQtListBox* box = ListOf(list)) box->SetTopIndex(index);
}

clRect ListRowRect(clWindowHandle list, int32_t index) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr) return clRect{};
    QRect area = box->RowRect(index);
    return clRect::Sized(area.x(), area.y(), area.width(), area.height());
}

int32_t ListRowAt(clWindowHandle list, int32_t, int32_t y) {
    clQtListBox* box = ListOf(list);
    return box != nullptr ? box->RowAt(y) : -1;
}

uint64_t ListRowData(clWindowHandle list, int32_t index) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr || index < 0 || index >= box->rows.size()) return 0;
    return box->rows[index].data;
}

void ListSetRowData(clWindowHandle list, int32_t index, uint64_t itemData) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr || index < 0 || index >= box->rows.size()) return;
    box->rows[index].data = itemData;
}

void InvalidateListRow(clWindowHandle list, int32_t index) {
    clQtListBox* box = ListOf(list);
    if (box == nullptr) return;
    QRect area = box->RowRect(index);
    if (!area.isNull()) box->viewport()->update(area);
}
