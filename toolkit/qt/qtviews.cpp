// The Qt back end's list and tree views. Both are QTreeWidgets: the list
// as a flat report with columns, the tree with its header hidden. What
// the user does to them, by real events or by the toolkit's messages,
// goes through one set of handlers that keep the selection as a Win32
// view keeps it and tell the parent with kWmNotify.
#include <QApplication>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeWidget>

#include <algorithm>

#include "toolkit/controls.h"
#include "toolkit/qt/qtcanvas.h"
#include "toolkit/qt/qtwidgets.h"
#include "toolkit/views.h"

namespace {

intptr_t SendNotify(QWidget* view, clViewNotify& record) {
    record.from = HandleOf(view);
    record.id = ControlIdOf(view);
    return RouteMessage(ToolkitParentOf(view), kWmNotify, record.id, reinterpret_cast<intptr_t>(&record));
}

class clQtView;

// Asks the view's owner for each cell's colours before it is painted.
class clQtViewDelegate : public QStyledItemDelegate {
public:
    QWidget* view;
    explicit clQtViewDelegate(QWidget* owner) : QStyledItemDelegate(owner), view(owner) {}

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        clViewNotify record;
        record.code = kNmCustomDraw;
        record.drawStage = kCddsItemPrePaint;
        record.row = index.row();
        record.column = index.column();
        SendNotify(view, record);
        if (record.textColor != clNoColor) option->palette.setColor(QPalette::Text, ToQColor(record.textColor));
        if (record.backColor != clNoColor) option->backgroundBrush = QBrush(ToQColor(record.backColor));
    }
};

class clQtView : public QTreeWidget {
public:
    bool isTree;
    bool checkBoxes = false;
    QVector<QIcon> images;
    int anchor = -1;  // where a shift-click's range starts

    clQtView(QWidget* parent, bool tree) : QTreeWidget(parent), isTree(tree) {
        setItemDelegate(new clQtViewDelegate(this));
        // Rows don't light up under the pointer, as on Windows.
        viewport()->setAttribute(Qt::WA_Hover, false);
        setUniformRowHeights(true);
        setEditTriggers(QAbstractItemView::NoEditTriggers);
        setExpandsOnDoubleClick(tree);
        if (tree) {
            setHeaderHidden(true);
            setSelectionMode(QAbstractItemView::SingleSelection);
        } else {
            setRootIsDecorated(false);
            setIndentation(0);
            setColumnCount(0);
            setSelectionMode(QAbstractItemView::ExtendedSelection);
            setSelectionBehavior(QAbstractItemView::SelectRows);
            setAllColumnsShowFocus(true);
            // Paths keep their start and their file name when cut.
            setTextElideMode(Qt::ElideMiddle);
            header()->setStretchLastSection(false);
            header()->setSectionsClickable(true);
            connect(header(), &QHeaderView::sectionClicked, this, [this](int column) {
                clViewNotify record;
                record.code = kLvnColumnClick;
                record.column = column;
                SendNotify(this, record);
            });
            connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
                    [this](const QItemSelection& selected, const QItemSelection& deselected) {
                        TellSelection(selected, true);
                        TellSelection(deselected, false);
                    });
        }
        connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
                [this]() { RouteMessage(this, kWmVScroll, 0, 0); });
        if (tree) {
            connect(this, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* now, QTreeWidgetItem* old) {
                clViewNotify record;
                record.code = kTvnSelChanged;
                record.item = clTreeItem{now, HandleOf(this)};
                record.oldItem = clTreeItem{old, HandleOf(this)};
                SendNotify(this, record);
            });
            auto expanded = [this](QTreeWidgetItem* item, bool open) {
                clViewNotify record;
                record.item = clTreeItem{item, HandleOf(this)};
                record.newState = open ? 1 : 0;
                record.code = kTvnItemExpanding;
                SendNotify(this, record);
                record.code = kTvnItemExpanded;
                SendNotify(this, record);
            };
            connect(this, &QTreeWidget::itemExpanded, this, [expanded](QTreeWidgetItem* item) { expanded(item, true); });
            connect(this, &QTreeWidget::itemCollapsed, this,
                    [expanded](QTreeWidgetItem* item) { expanded(item, false); });
        }
    }

    uint32_t StateOf(int row) const {
        QTreeWidgetItem* item = topLevelItem(row);
        if (item == nullptr) return 0;
        uint32_t state = 0;
        if (item->isSelected()) state |= kStateSelected;
        if (currentItem() == item) state |= kStateFocused;
        if (checkBoxes) state |= item->checkState(0) == Qt::Checked ? kStateChecked : kStateUnchecked;
        return state;
    }

    void TellChange(int row, uint32_t newState, uint32_t oldState) {
        if (newState == oldState) return;
        clViewNotify record;
        record.code = kLvnItemChanged;
        record.row = row;
        record.column = 0;
        record.newState = newState;
        record.oldState = oldState;
        SendNotify(this, record);
    }

    void TellSelection(const QItemSelection& changed, bool selected) {
        for (const QItemSelectionRange& range : changed) {
            for (int row = range.top(); row <= range.bottom(); ++row) {
                uint32_t now = StateOf(row);
                uint32_t before = selected ? now & ~kStateSelected : now | kStateSelected;
                TellChange(row, now, before);
            }
        }
    }

    int ContentWidth(int column) const { return sizeHintForColumn(column); }

    int RowAt(QPoint point) const {
        QTreeWidgetItem* item = itemAt(point);
        return item != nullptr ? indexOfTopLevelItem(item) : -1;
    }

    // A press of a mouse button at a viewport point, as a Win32 list
    // view takes it.
    void Press(QPoint point, Qt::MouseButton button, Qt::KeyboardModifiers modifiers) {
        setFocus(Qt::MouseFocusReason);
        if (isTree) {
            QTreeWidgetItem* item = itemAt(point);
            if (item != nullptr && button == Qt::LeftButton) setCurrentItem(item);
            return;
        }
        int row = RowAt(point);
        if (row < 0) {
            if (button == Qt::LeftButton && (modifiers & (Qt::ControlModifier | Qt::ShiftModifier)) == 0) {
                clearSelection();
            }
            return;
        }
        QTreeWidgetItem* item = topLevelItem(row);
        if (button != Qt::LeftButton) {
            if (!item->isSelected()) SelectRow(row);
            return;
        }
        if ((modifiers & Qt::ShiftModifier) != 0 && anchor >= 0) {
            if ((modifiers & Qt::ControlModifier) == 0) clearSelection();
            int low = std::min(anchor, row), high = std::max(anchor, row);
            for (int i = low; i <= high; ++i) topLevelItem(i)->setSelected(true);
            setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
        } else if ((modifiers & Qt::ControlModifier) != 0) {
            item->setSelected(!item->isSelected());
            setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
            anchor = row;
        } else {
            SelectRow(row);
        }
    }

    void SelectRow(int row) {
        QTreeWidgetItem* item = topLevelItem(row);
        if (item == nullptr) return;
        setCurrentItem(item, 0, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        anchor = row;
    }

    void Click(QPoint point, int32_t code) {
        clViewNotify record;
        record.code = code;
        record.point = clPoint{point.x(), point.y()};
        if (!isTree) {
            record.row = RowAt(point);
            record.column = header()->logicalIndexAt(point.x());
        }
        SendNotify(this, record);
    }

    // A key as a Win32 view takes it; false leaves it to Qt.
    bool Key(uint32_t key, Qt::KeyboardModifiers modifiers) {
        clViewNotify record;
        record.code = isTree ? kTvnKeyDown : kLvnKeyDown;
        record.key = key;
        if (SendNotify(this, record) != 0 && isTree) return true;
        if (isTree) return false;
        int count = topLevelItemCount();
        int current = currentItem() != nullptr ? indexOfTopLevelItem(currentItem()) : -1;
        int next = -1;
        switch (key) {
            case kVkUp: next = std::max(0, current - 1); break;
            case kVkDown: next = std::min(count - 1, current + 1); break;
            case kVkHome: next = 0; break;
            case kVkEnd: next = count - 1; break;
            default: return false;
        }
        if (next < 0 || next >= count) return true;
        if ((modifiers & Qt::ShiftModifier) != 0 && anchor >= 0) {
            clearSelection();
            for (int i = std::min(anchor, next); i <= std::max(anchor, next); ++i) topLevelItem(i)->setSelected(true);
            setCurrentItem(topLevelItem(next), 0, QItemSelectionModel::NoUpdate);
        } else {
            SelectRow(next);
        }
        scrollToItem(topLevelItem(next));
        return true;
    }

protected:
    // Focus alone makes no row the current one, as on Windows.
    void focusInEvent(QFocusEvent* event) override {
        bool hadCurrent = currentIndex().isValid();
        QTreeWidget::focusInEvent(event);
        if (!hadCurrent && !isTree) selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
    }
    void mousePressEvent(QMouseEvent* event) override {
        if (isTree) {
            QTreeWidget::mousePressEvent(event);
            if (event->button() == Qt::RightButton) Click(event->position().toPoint(), kNmRightClick);
            return;
        }
        Press(event->position().toPoint(), event->button(), event->modifiers());
        if (event->button() == Qt::RightButton) Click(event->position().toPoint(), kNmRightClick);
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        if (isTree) QTreeWidget::mouseMoveEvent(event);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (isTree) QTreeWidget::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton) Click(event->position().toPoint(), kNmClick);
    }
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (isTree) QTreeWidget::mouseDoubleClickEvent(event);
        Click(event->position().toPoint(),
              event->button() == Qt::RightButton ? kNmRightDoubleClick : kNmDoubleClick);
    }
    void keyPressEvent(QKeyEvent* event) override {
        uint32_t key = 0;
        switch (event->key()) {
            case Qt::Key_Up: key = kVkUp; break;
            case Qt::Key_Down: key = kVkDown; break;
            case Qt::Key_Home: key = kVkHome; break;
            case Qt::Key_End: key = kVkEnd; break;
            case Qt::Key_Space: key = kVkSpace; break;
            case Qt::Key_F2: key = kVkF2; break;
            case Qt::Key_Delete: key = kVkDelete; break;
            default: key = event->key() >= Qt::Key_A && event->key() <= Qt::Key_Z
                               ? static_cast<uint32_t>('A' + event->key() - Qt::Key_A)
                               : 0;
        }
        if (key != 0 && Key(key, event->modifiers())) return;
        QTreeWidget::keyPressEvent(event);
    }
};

clQtView* ViewOf(clWindowHandle window) { return dynamic_cast<clQtView*>(WidgetOf(window)); }
clQtView* ListOf(clWindowHandle window) {
    clQtView* view = ViewOf(window);
    return view != nullptr && !view->isTree ? view : nullptr;
}
clQtView* TreeOf(clWindowHandle window) {
    clQtView* view = ViewOf(window);
    return view != nullptr && view->isTree ? view : nullptr;
}
QTreeWidgetItem* ItemOf(const clTreeItem& item) {
    return TreeOf(item.tree) != nullptr ? static_cast<QTreeWidgetItem*>(item.item) : nullptr;
}

QVector<QIcon> IconsOf(const clImageHandle* images, int32_t count, int32_t size) {
    QVector<QIcon> icons;
    for (int32_t i = 0; i < count; ++i) {
        clQtImage* picture = QtImageOf(images[i]);
        QImage image = picture != nullptr ? picture->image.scaled(size, size, Qt::KeepAspectRatio,
                                                                  Qt::SmoothTransformation)
                                          : QImage();
        icons.append(QIcon(QPixmap::fromImage(image)));
    }
    return icons;
}

}  // namespace

QWidget* CreateQtView(bool tree, QWidget* host) { return new clQtView(host, tree); }

intptr_t QtViewDefaultHandling(QWidget* widget, uint32_t message, uintptr_t wParam, intptr_t lParam) {
    auto* view = dynamic_cast<clQtView*>(widget);
    if (view == nullptr) return 0;
    QPoint point(clXOf(lParam), clYOf(lParam));
    Qt::KeyboardModifiers modifiers;
    if ((wParam & kMkShift) != 0) modifiers |= Qt::ShiftModifier;
    if ((wParam & kMkControl) != 0) modifiers |= Qt::ControlModifier;
    switch (message) {
        case kWmLButtonDown: view->Press(point, Qt::LeftButton, modifiers); break;
        case kWmLButtonUp: view->Click(point, kNmClick); break;
        case kWmRButtonDown:
            view->Press(point, Qt::RightButton, modifiers);
            view->Click(point, kNmRightClick);
            break;
        case kWmLButtonDoubleClick: view->Click(point, kNmDoubleClick); break;
        case kWmKeyDown: {
            Qt::KeyboardModifiers keys = QGuiApplication::queryKeyboardModifiers();
            view->Key(static_cast<uint32_t>(wParam), keys);
            break;
        }
        case kWmMouseWheel: {
            int delta = static_cast<int16_t>(clHighWord(wParam));
            QScrollBar* bar = view->verticalScrollBar();
            bar->setValue(bar->value() - delta / 120 * 3 * bar->singleStep());
            break;
        }
        default: break;
    }
    return 0;
}

void WindowSetRedraw(clWindowHandle window, bool redraw) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    widget->setUpdatesEnabled(redraw);
    if (redraw) widget->update();
}

void ListViewSetCheckBoxes(clWindowHandle window, bool checkBoxes) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    view->checkBoxes = checkBoxes;
    for (int i = 0; i < view->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = view->topLevelItem(i);
        if (checkBoxes) item->setCheckState(0, Qt::Unchecked);
        else item->setData(0, Qt::CheckStateRole, QVariant());
    }
}

bool ListViewHasCheckBoxes(clWindowHandle window) {
    clQtView* view = ListOf(window);
    return view != nullptr && view->checkBoxes;
}

void ListViewSetImages(clWindowHandle window, const clImageHandle* images, int32_t count, int32_t size) {
    if (clQtView* view = ListOf(window)) {
        view->images = IconsOf(images, count, size);
        view->setIconSize(QSize(size, size));
    }
}

int32_t ListViewInsertColumn(clWindowHandle window, int32_t index, const clString& title, int32_t width,
                             bool rightAligned) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return -1;
    int count = view->columnCount();
    if (index < 0 || index > count) index = count;
    QTreeWidgetItem* heading = view->headerItem();
    view->setColumnCount(count + 1);
    for (int c = count; c > index; --c) {
        heading->setText(c, heading->text(c - 1));
        heading->setData(c, Qt::TextAlignmentRole, heading->data(c - 1, Qt::TextAlignmentRole));
        view->setColumnWidth(c, view->columnWidth(c - 1));
        for (int i = 0; i < view->topLevelItemCount(); ++i) {
            QTreeWidgetItem* item = view->topLevelItem(i);
            item->setText(c, item->text(c - 1));
            item->setData(c, Qt::TextAlignmentRole, item->data(c - 1, Qt::TextAlignmentRole));
        }
    }
    Qt::Alignment align = (rightAligned ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
    heading->setText(index, ToQString(title));
    heading->setData(index, Qt::TextAlignmentRole, static_cast<int>(align));
    view->setColumnWidth(index, width);
    for (int i = 0; i < view->topLevelItemCount(); ++i) {
        view->topLevelItem(i)->setText(index, QString());
        view->topLevelItem(i)->setData(index, Qt::TextAlignmentRole, static_cast<int>(align));
    }
    return index;
}

void ListViewSetColumnWidth(clWindowHandle window, int32_t column, int32_t width) {
    clQtView* view = ListOf(window);
    if (view == nullptr || column < 0 || column >= view->columnCount()) return;
    if (width >= 0) {
        view->setColumnWidth(column, width);
        return;
    }
    int fit = view->ContentWidth(column);
    if (width == -2) {
        fit = std::max(fit, view->header()->sectionSizeHint(column));
        if (column == view->columnCount() - 1) {
            // The last column takes what is left of the width, as on Windows.
            int others = 0;
            for (int c = 0; c < column; ++c) others += view->columnWidth(c);
            fit = std::max(fit, view->viewport()->width() - others);
        }
    }
    view->setColumnWidth(column, fit);
}

int32_t ListViewColumnWidth(clWindowHandle window, int32_t column) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->columnWidth(column) : 0;
}

int32_t ListViewHeadingWidth(clWindowHandle window, int32_t column) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->header()->sectionSizeHint(column) : 0;
}

int32_t ListViewColumnCount(clWindowHandle window) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->columnCount() : 0;
}

int32_t ListViewInsertItem(clWindowHandle window, int32_t index, const clString& text, int32_t image,
                           uint32_t checkState) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return -1;
    int count = view->topLevelItemCount();
    if (index < 0 || index > count) index = count;
    auto* item = new QTreeWidgetItem;
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    item->setText(0, ToQString(text));
    for (int c = 0; c < view->columnCount(); ++c) {
        item->setData(c, Qt::TextAlignmentRole, view->headerItem()->data(c, Qt::TextAlignmentRole));
    }
    if (view->checkBoxes) {
        item->setCheckState(0, (checkState & kStateImageMask) == kStateChecked ? Qt::Checked : Qt::Unchecked);
    }
    if (image >= 0 && image < view->images.size()) item->setIcon(0, view->images[image]);
    view->insertTopLevelItem(index, item);
    if (view->anchor >= index) ++view->anchor;
    return index;
}

void ListViewSetItemText(clWindowHandle window, int32_t row, int32_t column, const clString& text) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    if (QTreeWidgetItem* item = view->topLevelItem(row)) item->setText(column, ToQString(text));
}

clString ListViewGetItemText(clWindowHandle window, int32_t row, int32_t column) {
    clQtView* view = ListOf(window);
    QTreeWidgetItem* item = view != nullptr ? view->topLevelItem(row) : nullptr;
    return item != nullptr ? FromQString(item->text(column)) : clString();
}

// A tree widget has no use for the hint.
void ListViewReserve(clWindowHandle, int32_t) {}

void ListViewDeleteItem(clWindowHandle window, int32_t row) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    delete view->takeTopLevelItem(row);
    if (view->anchor == row) view->anchor = -1;
    else if (view->anchor > row) --view->anchor;
}

void ListViewDeleteAll(clWindowHandle window) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    view->clear();
    view->anchor = -1;
}

int32_t ListViewCount(clWindowHandle window) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->topLevelItemCount() : 0;
}

uint32_t ListViewGetState(clWindowHandle window, int32_t row) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->StateOf(row) : 0;
}

void ListViewSetState(clWindowHandle window, int32_t row, uint32_t state, uint32_t mask) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    int first = row < 0 ? 0 : row;
    int last = row < 0 ? view->topLevelItemCount() - 1 : row;
    for (int i = first; i <= last; ++i) {
        QTreeWidgetItem* item = view->topLevelItem(i);
        if (item == nullptr) continue;
        uint32_t before = view->StateOf(i);
        if ((mask & kStateImageMask) != 0 && view->checkBoxes) {
            item->setCheckState(0, (state & kStateImageMask) == kStateChecked ? Qt::Checked : Qt::Unchecked);
        }
        if ((mask & kStateFocused) != 0) {
            if ((state & kStateFocused) != 0) {
                view->setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
                view->anchor = i;
            } else if (view->currentItem() == item) {
                view->setCurrentItem(nullptr, 0, QItemSelectionModel::NoUpdate);
            }
        }
        // A selection change tells the parent through the selection model.
        if ((mask & kStateSelected) != 0) item->setSelected((state & kStateSelected) != 0);
        uint32_t after = view->StateOf(i);
        view->TellChange(i, after, (before & kStateImageMask) | (after & ~kStateImageMask));
    }
}

int32_t ListViewSelectedCount(clWindowHandle window) {
    clQtView* view = ListOf(window);
    return view != nullptr ? static_cast<int32_t>(view->selectionModel()->selectedRows().size()) : 0;
}

int32_t ListViewNextSelected(clWindowHandle window, int32_t after) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return -1;
    for (int i = after + 1; i < view->topLevelItemCount(); ++i) {
        if (view->topLevelItem(i)->isSelected()) return i;
    }
    return -1;
}

void ListViewEnsureVisible(clWindowHandle window, int32_t row) {
    clQtView* view = ListOf(window);
    if (view == nullptr) return;
    if (QTreeWidgetItem* item = view->topLevelItem(row)) view->scrollToItem(item);
}

int32_t ListViewHitTest(clWindowHandle window, clPoint point, int32_t* column) {
    clQtView* view = ListOf(window);
    if (column != nullptr) *column = -1;
    if (view == nullptr) return -1;
    int row = view->RowAt(QPoint(point.x, point.y));
    if (row >= 0 && column != nullptr) *column = view->header()->logicalIndexAt(point.x);
    return row;
}

clRect ListViewCellRect(clWindowHandle window, int32_t row, int32_t column) {
    clQtView* view = ListOf(window);
    QTreeWidgetItem* item = view != nullptr ? view->topLevelItem(row) : nullptr;
    if (item == nullptr) return clRect{};
    QRect cell = view->visualItemRect(item);
    int left = view->header()->sectionViewportPosition(column);
    int width = view->columnWidth(column);
    if (column == 0) {
        // The text starts after the check box and the icon.
        int skip = 0;
        if (view->checkBoxes) skip += 20;
        if (!item->icon(0).isNull()) skip += view->iconSize().width() + 4;
        left += skip;
        width -= skip;
    }
    return clRect::Sized(left, cell.top(), std::max(0, width), cell.height());
}

int32_t ListViewColumnAtPosition(clWindowHandle window, int32_t position) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->header()->logicalIndex(position) : -1;
}

int32_t ListViewScrollX(clWindowHandle window) {
    clQtView* view = ListOf(window);
    return view != nullptr ? view->horizontalScrollBar()->value() : 0;
}

void TreeSetImages(clWindowHandle window, const clImageHandle* images, int32_t count, int32_t size) {
    if (clQtView* view = TreeOf(window)) {
        view->images = IconsOf(images, count, size);
        view->setIconSize(QSize(size, size));
    }
}

clTreeItem TreeInsertItem(clWindowHandle window, const clTreeItem& parent, const clString& text, int32_t image,
                          int32_t, uint64_t value) {
    clQtView* view = TreeOf(window);
    if (view == nullptr) return clTreeItem{};
    QTreeWidgetItem* above = parent.IsValid() ? ItemOf(parent) : nullptr;
    auto* item = new QTreeWidgetItem;
    item->setText(0, ToQString(text));
    item->setData(0, Qt::UserRole, QVariant::fromValue(static_cast<qulonglong>(value)));
    item->setData(0, Qt::UserRole + 1, image);
    if (image >= 0 && image < view->images.size()) item->setIcon(0, view->images[image]);
    if (above != nullptr) above->addChild(item);
    else view->addTopLevelItem(item);
    return clTreeItem{item, window};
}

void TreeDeleteAll(clWindowHandle window) {
    if (clQtView* view = TreeOf(window)) view->clear();
}

void TreeExpand(const clTreeItem& item, bool expand) {
    if (QTreeWidgetItem* node = ItemOf(item)) node->setExpanded(expand);
}

bool TreeIsExpanded(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    return node != nullptr && node->isExpanded();
}

clTreeItem TreeFirstChild(clWindowHandle window, const clTreeItem& parent) {
    clQtView* view = TreeOf(window);
    if (view == nullptr) return clTreeItem{};
    QTreeWidgetItem* first = nullptr;
    if (parent.IsValid()) {
        QTreeWidgetItem* node = ItemOf(parent);
        first = node != nullptr && node->childCount() > 0 ? node->child(0) : nullptr;
    } else {
        first = view->topLevelItem(0);
    }
    return first != nullptr ? clTreeItem{first, window} : clTreeItem{};
}

clTreeItem TreeNextSibling(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    if (node == nullptr) return clTreeItem{};
    QTreeWidgetItem* next = nullptr;
    if (QTreeWidgetItem* parent = node->parent()) {
        next = parent->child(parent->indexOfChild(node) + 1);
    } else {
        QTreeWidget* tree = node->treeWidget();
        next = tree->topLevelItem(tree->indexOfTopLevelItem(node) + 1);
    }
    return next != nullptr ? clTreeItem{next, item.tree} : clTreeItem{};
}

clString TreeItemText(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    return node != nullptr ? FromQString(node->text(0)) : clString();
}

uint64_t TreeItemValue(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    return node != nullptr ? node->data(0, Qt::UserRole).toULongLong() : 0;
}

int32_t TreeItemImage(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    return node != nullptr ? node->data(0, Qt::UserRole + 1).toInt() : -1;
}

clTreeItem TreeSelected(clWindowHandle window) {
    clQtView* view = TreeOf(window);
    QTreeWidgetItem* item = view != nullptr ? view->currentItem() : nullptr;
    return item != nullptr ? clTreeItem{item, window} : clTreeItem{};
}

void TreeSelect(const clTreeItem& item) {
    if (QTreeWidgetItem* node = ItemOf(item)) node->treeWidget()->setCurrentItem(node);
}

int32_t TreeCount(clWindowHandle window) {
    clQtView* view = TreeOf(window);
    if (view == nullptr) return 0;
    int32_t count = 0;
    for (QTreeWidgetItemIterator it(view); *it != nullptr; ++it) ++count;
    return count;
}

clRect TreeItemRect(const clTreeItem& item) {
    QTreeWidgetItem* node = ItemOf(item);
    if (node == nullptr) return clRect{};
    QRect area = node->treeWidget()->visualItemRect(node);
    return clRect::Sized(area.x(), area.y(), area.width(), area.height());
}

clTreeItem TreeHitTest(clWindowHandle window, clPoint point) {
    clQtView* view = TreeOf(window);
    QTreeWidgetItem* item = view != nullptr ? view->itemAt(QPoint(point.x, point.y)) : nullptr;
    return item != nullptr ? clTreeItem{item, window} : clTreeItem{};
}
