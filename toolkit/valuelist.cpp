#include "toolkit/valuelist.h"

#include <algorithm>
#include <cstdlib>

#include "foundation/platform/thread.h"
#include "toolkit/controls.h"
#include "toolkit/xwindow.h"

namespace {

constexpr uint32_t kEditorId = 1001;
constexpr uint32_t kEditorButtonId = 1002;
constexpr uint32_t kLinkColor = 0xFF0000;  // blue, in the platform's byte order
constexpr int32_t kBoxSize = 13;
constexpr uint32_t kFull = kPackFromFarEdge;

bool KindHasEditor(uint32_t kind) { return kind == kRowEdit || kind == kRowSuggest || kind == kRowChoice; }
bool KindIsToggle(uint32_t kind) { return kind == kRowCheck || kind == kRowRadio; }

}  // namespace

uint32_t XValueList::listCounter = 0;

clValueRowDesc::clValueRowDesc(const clValueRowDesc& other) { *this = other; }

clValueRowDesc& clValueRowDesc::operator=(const clValueRowDesc& other) {
    if (this == &other) return *this;
    kind = other.kind;
    name = other.name;
    nameLeft = other.nameLeft;
    nameFontSize = other.nameFontSize;
    nameColor = other.nameColor;
    nameBold = other.nameBold;
    nameUnderline = other.nameUnderline;
    readOnly = other.readOnly;
    nameItalic = other.nameItalic;
    value = other.value;
    valueLeft = other.valueLeft;
    valueColor = other.valueColor;
    valueWidth = other.valueWidth;
    lines = other.lines;
    icon = other.icon;
    imageLeft = other.imageLeft;
    choices.Clear();
    choices.AddAll(other.choices);
    buttonText = other.buttonText;
    onButton = other.onButton;
    onChange = other.onChange;
    userValue = other.userValue;
    return *this;
}

XValueList::XValueList() {
    control.owner = this;
    listSubclass.owner = this;
}

XValueList::~XValueList() { Destroy(); }

void XValueList::Destroy() {
    Clear();
    clWindowHandle list = listHandle;
    listSubclass.Detach();
    if (list != nullptr) DestroyControl(list);
    listHandle = nullptr;
    delete measure;
    measure = nullptr;
    if (measureImage != nullptr) DestroyImage(measureImage);
    measureImage = nullptr;
}

uint32_t XValueList::Pixels(uint32_t packed) const {
    if (unitsArePixels) return packed;
    int32_t pixels = XWindow::ScaleUnits(clPackedPixels(packed));
    return clPack(pixels, packed & (kPackFlags & ~kPackNegative));
}

bool XValueList::Create(clWindowHandle parent, int32_t x, int32_t y, int32_t width, int32_t height, bool pixels,
                        bool allowDrag) {
    Destroy();
    parentWindow = parent;
    unitsArePixels = pixels;
    allowDragging = allowDrag;
    listId = (PlatformTickCount() + ++listCounter) & 0xFFFF;
    listHandle = CreateControl(kControlListBox, parent, listId, clString(), clRect::Sized(x, y, width, height));
    if (listHandle == nullptr) return false;
    listSubclass.Attach(listHandle);
    measureImage = CreateImage(8, 8);
    measure = CanvasOnImage(measureImage);
    font.CreateFont(measure, nullptr, clPackedPixels(Pixels(defaultValueFontSize)), textColor, 0, false, false, false);
    clFontSpec spec = font.font;
    WindowSetFont(listHandle, spec);
    return true;
}

clValueRow* XValueList::Row(int32_t row) const {
    return row >= 0 && row < rows.count ? rows.At<clValueRow>(row) : nullptr;
}

int32_t XValueList::DefaultRowHeight() {
    if (rowHeight != 0) return clPackedPixels(Pixels(rowHeight));
    // The rows' own fonts pass through the measuring canvas: the list's
    // font goes back on it first, so every row measures the same.
    if (measure != nullptr) measure->SetFont(font.font);
    int32_t textHeight = measure != nullptr ? font.MeasureText(clString(u"Aj")).height : 15;
    return textHeight + XWindow::ScaleUnits(8) + XWindow::ScaleUnits(4);
}

// Breaks the label at blanks so that each line fits `width`.
clString XValueList::WrapName(const clValueRow& row, int32_t width, int32_t& lineCount) {
    clStringList words;
    words.Split(row.name.text, u" ");
    clString result, line;
    lineCount = 0;
    for (int64_t i = 0; i < words.Count(); ++i) {
        clString trial = line;
        if (!trial.IsEmpty()) trial.Append(u" ");
        trial.Append(words[i]);
        if (!line.IsEmpty() && measure->MeasureText(trial).width > width) {
            result.Append(line);
            result.Append(u"\r\n");
            ++lineCount;
            line = words[i];
        } else {
            line = trial;
        }
    }
    result.Append(line);
    ++lineCount;
    return result;
}

// A plain row of two lines with a link: the link goes on the second line.
bool XValueList::LinkBelow(const clValueRow& row) {
    return row.kind == kRowPlain && row.lines >= 2 && !row.buttonText.IsEmpty();
}

void XValueList::BuildRow(clValueRow& row) {
    clDrawList& list = row.drawList;
    list.Clear();
    if (row.kind == kRowHeading) {
        list.AddGradient(0, 0, kFull, kFull, 0xFFFFFF, 16117469, 0xFFFFFF, 0xFFFAEE);
    } else {
        list.AddFill(0, 0, kFull, kFull, background);
    }
    row.selectionOrder =
        list.AddFramedRect(1, 1, clPack(-2, kFull), clPack(-2, kFull), selectionColor, selectionColor, 4) - 1;
    int32_t nameX = clPackedPixels(row.nameLeft);
    const uint32_t middle = kPackFromMiddle | kPackCentredHere;
    if (row.icon != nullptr) {
        row.iconOrder = list.AddIcon(clPack(nameX), middle, row.icon, 16, 16) - 1;
        nameX += 16 + 4;
    }
    if (KindIsToggle(row.kind)) {
        int32_t box = XWindow::ScaleUnits(kBoxSize);
        uint32_t boxX = clPack(clPackedPixels(row.imageLeft));
        int32_t radius = row.kind == kRowRadio ? box / 2 : 2;
        row.boxOrder = list.AddFramedRect(boxX, middle, clPack(box), clPack(box), 0xFFFFFF, 0x707070, radius) - 1;
        int32_t inset = box / 4;
        row.markOrder = list.AddFramedRect(clPack(clPackedPixels(row.imageLeft) + inset), middle,
                                           clPack(box - 2 * inset), clPack(box - 2 * inset), 0x333333, 0x333333,
                                           row.kind == kRowRadio ? (box - 2 * inset) / 2 : 1) -
                        1;
        nameX = std::max(nameX, clPackedPixels(row.imageLeft) + box + XWindow::ScaleUnits(6));
    }
    uint32_t nameStyle = (row.nameBold ? kTextBold : 0) | (row.nameItalic ? kTextItalic : 0) |
                         (row.nameUnderline ? kTextUnderline : 0);
    clString face(u"Tahoma");
    int32_t nameSize = clPackedPixels(row.nameFontSize);
    uint32_t nameColor = row.nameColor != 0 ? row.nameColor : textColor;
    int32_t listWidth = listHandle != nullptr ? WindowClientRect(listHandle).Width() : 300;
    if (row.kind == kRowWrapped) {
        clFontSpec spec;
        spec.face = face;
        spec.height = nameSize;
        spec.bold = row.nameBold;
        spec.italic = row.nameItalic;
        measure->SetFont(spec);
        int32_t lineCount = 0;
        clString wrapped = WrapName(row, std::max(20, listWidth - nameX - 8), lineCount);
        int32_t lineHeight = measure->MeasureText(clString(u"Ay")).height;
        row.height = lineCount * lineHeight + XWindow::ScaleUnits(8);
        row.nameOrder = list.AddText(clPack(nameX), clPack(XWindow::ScaleUnits(4)), clPack(-(nameX + 4), kFull), 0,
                                     wrapped, face, nameSize, nameColor, nameStyle | kTextMultiLine) -
                        1;
    } else {
        int32_t line = DefaultRowHeight();
        row.height = LinkBelow(row) ? 2 * line - XWindow::ScaleUnits(8) : line;
        uint32_t nameWidth =
            row.kind == kRowSingle || row.kind == kRowHeading || KindIsToggle(row.kind) || LinkBelow(row)
                ? clPack(-(nameX + 4), kFull)
                : clPack(std::max(10, clPackedPixels(row.valueLeft) - nameX - 6));
        row.nameOrder = list.AddText(clPack(nameX), 0, nameWidth, LinkBelow(row) ? clPack(line) : kFull, row.name,
                                     face, nameSize, nameColor, nameStyle | kTextEllipsis, kAlignVCenter) -
                        1;
    }
    bool drawsValue = row.kind != kRowSingle && row.kind != kRowWrapped && !KindIsToggle(row.kind);
    int32_t valueX = clPackedPixels(row.valueLeft);
    int32_t valueSize = clPackedPixels(Pixels(defaultValueFontSize));
    int32_t bracketWidth = 0;
    if (!row.buttonText.IsEmpty() && row.kind != kRowPlain) {
        clString bracket(u"[ ", row.buttonText.text);
        bracket.Append(u" ]");
        clFontSpec spec;
        spec.face = face;
        spec.height = valueSize;
        measure->SetFont(spec);
        bracketWidth = measure->MeasureText(bracket).width + XWindow::ScaleUnits(8);
        row.bracketOrder = list.AddText(clPack(-4, kFull | kPackEndsHere), 0, 0, kFull, bracket, face, valueSize,
                                        0x808080, 0, kAlignVCenter) -
                           1;
    }
    if (drawsValue) {
        bool link = row.kind == kRowLink;
        uint32_t color = link ? kLinkColor : (row.valueColor != 0 ? row.valueColor : textColor);
        row.valueOrder = list.AddText(clPack(valueX), 0, clPack(-(valueX + 4 + bracketWidth), kFull), kFull,
                                      row.value, face, valueSize, color,
                                      kTextEllipsis | (link ? kTextUnderline : 0), kAlignVCenter) -
                         1;
    }
    if (row.kind == kRowPlain && !row.buttonText.IsEmpty()) {
        clFontSpec spec;
        spec.face = face;
        spec.height = valueSize;
        measure->SetFont(spec);
        int32_t valueWidth = row.value.IsEmpty() ? 0 : measure->MeasureText(row.value).width + 8;
        int32_t line = DefaultRowHeight();
        uint32_t top = LinkBelow(row) ? clPack(line - XWindow::ScaleUnits(8)) : 0;
        row.bracketOrder = list.AddText(clPack(valueX + valueWidth), top, 0, LinkBelow(row) ? clPack(line) : kFull,
                                        row.buttonText, face, valueSize, kLinkColor, kTextUnderline, kAlignVCenter) -
                           1;
    }
}

void XValueList::FitNameColumn(const clStringList& names, int32_t mostPixels) {
    if (measure == nullptr) return;
    clFontSpec spec;
    spec.face = clString(u"Tahoma");
    spec.height = clPackedPixels(Pixels(defaultNameFontSize));
    measure->SetFont(spec);
    int32_t widest = 0;
    for (int64_t i = 0; i < names.Count(); ++i) widest = std::max(widest, measure->MeasureText(names[i]).width);
    int32_t pixels = clPackedPixels(Pixels(defaultNameLeft)) + widest + XWindow::ScaleUnits(16);
    if (mostPixels > 0) pixels = std::min(pixels, mostPixels);  // a list not yet laid out has no width
    // Back into the list's units, which Pixels() scales again.
    int32_t perHundred = unitsArePixels ? 100 : XWindow::ScaleUnits(100);
    defaultValueLeft = static_cast<uint32_t>(std::max(1, pixels * 100 / std::max(1, perHundred)));
}

int32_t XValueList::AddNoteRow(const char16_t* text, uint32_t color) {
    clValueRowDesc row;
    row.kind = kRowWrapped;  // a note cut short tells nothing
    row.name = text;
    row.nameColor = color;
    row.readOnly = true;
    return AddRow(row);
}

int32_t XValueList::AddRow(const clValueRowDesc& description, int32_t position) {
    control.Close();
    auto* row = new clValueRow;
    static_cast<clValueRowDesc&>(*row) = description;
    row->nameLeft = row->nameLeft != 0 ? Pixels(row->nameLeft) : Pixels(defaultNameLeft);
    row->valueLeft = row->valueLeft != 0 ? Pixels(row->valueLeft) : Pixels(defaultValueLeft);
    row->imageLeft = row->imageLeft != 0 ? Pixels(row->imageLeft) : row->nameLeft;
    row->nameFontSize = row->nameFontSize != 0 ? Pixels(row->nameFontSize) : Pixels(defaultNameFontSize);
    row->valueWidth = row->valueWidth != 0 ? Pixels(row->valueWidth) : 0;
    BuildRow(*row);
    if (position < 0 || position > rows.count) position = static_cast<int32_t>(rows.count);
    rows.InsertAt(position, row);
    rowNames.InsertAt(position, row->name.text);
    if (listHandle != nullptr) {
        ListInsertRow(listHandle, position, 0);
        ListSetRowHeight(listHandle, position, row->height);
    }
    return position;
}

void XValueList::Clear() {
    control.Close();
    for (int64_t i = 0; i < rows.count; ++i) {
        auto* row = rows.At<clValueRow>(i);
        if (row->icon != nullptr) DestroyImage(row->icon);
        delete row;
    }
    rows.Reset();
    rowNames.Clear();
    if (listHandle != nullptr) ListClear(listHandle);
}

void XValueList::DeleteRow(int32_t row) {
    clValueRow* found = Row(row);
    if (found == nullptr) return;
    control.Close();
    if (found->icon != nullptr) DestroyImage(found->icon);
    delete found;
    rows.RemoveAt(row);
    rowNames.RemoveAt(row);
    if (listHandle != nullptr) ListDeleteRow(listHandle, row);
}

clString XValueList::GetValue(int32_t row) {
    if (control.row == row) control.Commit();
    clValueRow* found = Row(row);
    return found != nullptr ? found->value : clString();
}

void XValueList::SetValue(int32_t row, const clString& text) {
    clValueRow* found = Row(row);
    if (found == nullptr) return;
    found->value = text;
    if (control.row == row && control.editorHandle != nullptr && found->kind != kRowChoice) {
        WindowSetText(control.editorHandle, text);
    }
    BuildRow(*found);
    RedrawRow(row);
}

bool XValueList::GetChecked(int32_t row) const {
    clValueRow* found = Row(row);
    if (found == nullptr) return false;
    if (found->kind == kRowCheck) return !found->value.IsEmpty();
    if (found->kind == kRowRadio) return found->value.CharAt(1) == u'-';
    return false;
}

void XValueList::SetChecked(int32_t row, bool checked) {
    clValueRow* found = Row(row);
    if (found == nullptr) return;
    if (found->kind == kRowCheck) {
        found->value = checked ? u"1" : u"";
    } else if (found->kind == kRowRadio) {
        int32_t group = std::abs(static_cast<int32_t>(found->value.ToInt64()));
        if (checked) {
            // At most one chosen row per group, wherever the rows stand.
            for (int64_t i = 0; i < rows.count; ++i) {
                auto* other = rows.At<clValueRow>(i);
                if (other->kind == kRowRadio && other->value.ToInt64() == -group) {
                    other->value = clString(static_cast<int32_t>(group));
                }
            }
            found->value = clString(static_cast<int32_t>(-group));
        } else {
            found->value = clString(static_cast<int32_t>(group));
        }
    } else {
        return;
    }
    if (listHandle != nullptr) WindowInvalidate(listHandle, nullptr);
}

int32_t XValueList::SelectedRow() const { return listHandle != nullptr ? ListGetSelection(listHandle) : -1; }

void XValueList::SelectRow(int32_t row) {
    control.Close();
    if (listHandle == nullptr) return;
    if (row >= static_cast<int32_t>(rows.count)) row = -1;
    ListSetSelection(listHandle, row);
    clValueRow* found = Row(row);
    if (found != nullptr && KindHasEditor(found->kind) && !found->readOnly) control.Open(row);
    WindowInvalidate(listHandle, nullptr);
    OnSelectionChanged(row);
}

void XValueList::RedrawRow(int32_t row) {
    if (listHandle != nullptr && row >= 0 && row < rows.count) InvalidateListRow(listHandle, row);
}

void XValueList::OnSelectionChanged(int32_t) {}
void XValueList::OnRowMoved(int32_t, int32_t) {}
void XValueList::OnValueCommitted(int32_t) {}

void XValueList::PaintRow(const clDrawItem& item) {
    clValueRow* row = Row(item.itemId);
    if (row == nullptr || item.canvas == nullptr) return;
    bool selected = (item.itemState & kOdsSelected) != 0;
    clDrawList& list = row->drawList;
    if (clDrawElement* selection = list.Element(row->selectionOrder)) selection->visible = selected;
    if (KindIsToggle(row->kind)) {
        if (clDrawElement* mark = list.Element(row->markOrder)) mark->visible = GetChecked(item.itemId);
    }
    if (row->bracketOrder != 0 && row->kind != kRowPlain) {
        if (clDrawElement* bracket = list.Element(row->bracketOrder)) {
            bracket->visible = !(control.row == item.itemId && control.buttonHandle != nullptr);
        }
    }
    if (clDrawElement* value = list.Element(row->valueOrder); value != nullptr && row->valueOrder != 0) {
        value->text = row->value;
    }
    list.SetCanvas(item.rect.Width(), item.rect.Height());
    list.Paint(*item.canvas, item.rect.left, item.rect.top);
    // The insertion mark of a drag: a line above the target row, or below
    // the last one for a drop at the end.
    if (dragRow >= 0 && dragTargetValid) {
        int32_t last = static_cast<int32_t>(rows.count) - 1;
        bool above = item.itemId == dragTarget;
        bool below = dragTarget > last && item.itemId == last;
        if (above || below) {
            int32_t y = above ? item.rect.top + 1 : item.rect.bottom - 2;
            item.canvas->Line(item.rect.left + 2, y, item.rect.right - 2, y, 0x000000, 2);
        }
    }
}

int32_t XValueList::RowAtPoint(int32_t x, int32_t y) const {
    return listHandle != nullptr ? ListRowAt(listHandle, x, y) : -1;
}

void XValueList::Toggle(int32_t row) {
    clValueRow* found = Row(row);
    if (found == nullptr) return;
    if (found->kind == kRowCheck) {
        SetChecked(row, found->value.IsEmpty());
    } else {
        SetChecked(row, true);
    }
    if (found->onChange) found->onChange(this);
}

void XValueList::Click(int32_t x, int32_t y) {
    int32_t row = RowAtPoint(x, y);
    clValueRow* found = Row(row);
    if (found == nullptr || found->readOnly) return;
    bool counts = false;
    if (KindIsToggle(found->kind)) {
        int32_t imageLeft = clPackedPixels(found->imageLeft);
        bool selectedAlready = row == SelectedRow() && found->buttonText.IsEmpty();
        counts = selectedAlready || (x >= imageLeft && x < imageLeft + XWindow::ScaleUnits(kBoxSize));
    }
    if (row != SelectedRow()) SelectRow(row);
    if (counts) Toggle(row);
    if (found->kind == kRowPlain && !found->buttonText.IsEmpty() && found->onButton) {
        clDrawElement* link = found->drawList.Element(found->bracketOrder);
        clRect rowRect = ListRowRect(listHandle, row);
        if (link != nullptr && measure != nullptr) {
            clRect place = found->drawList.Place(*link, *measure);
            if (x >= place.left && x < place.left + place.Width() + 1 && y >= rowRect.top) found->onButton(this);
        }
    }
}

void XValueList::MoveSelection(int32_t row) {
    int32_t count = static_cast<int32_t>(rows.count);
    if (count == 0) return;
    SelectRow(std::clamp(row, 0, count - 1));
}

void XValueList::DragMove(int32_t x, int32_t y) {
    int32_t count = static_cast<int32_t>(rows.count);
    clRect client = WindowClientRect(listHandle);
    // Past an edge the list scrolls by a row.
    if (y < 0) ListSetTopIndex(listHandle, std::max(0, ListTopIndex(listHandle) - 1));
    if (y >= client.Height()) ListSetTopIndex(listHandle, ListTopIndex(listHandle) + 1);
    int32_t target = RowAtPoint(x, std::clamp(y, 0, client.Height() - 1));
    if (target < 0) target = count;  // below the last row: the end
    if (target >= 0 && target < count) {
        // The lower half of a row means "after it".
        clRect rect = ListRowRect(listHandle, target);
        if (y >= rect.top + rect.Height() / 2) ++target;
    }
    bool valid = target != dragRow && target != dragRow + 1;
    clValueRow* first = Row(0);
    if (target == 0 && first != nullptr && first->kind == kRowHeading) valid = false;
    if (target != dragTarget || valid != dragTargetValid) {
        dragTarget = target;
        dragTargetValid = valid;
        WindowInvalidate(listHandle, nullptr);
    }
}

void XValueList::DragDrop() {
    int32_t from = dragRow, target = dragTarget;
    bool valid = dragTargetValid;
    DragEnd();
    if (!valid || from < 0) return;
    control.Close();
    int32_t to = target > from ? target - 1 : target;
    void* row = rows[from];
    rows.RemoveAt(from);
    rows.InsertAt(to, row);
    clString name = rowNames[from];
    rowNames.RemoveAt(from);
    rowNames.InsertAt(to, name.text);
    for (int32_t i = std::min(from, to); i <= std::max(from, to); ++i) {
        ListSetRowHeight(listHandle, i, Row(i)->height);
    }
    SelectRow(to);
    OnRowMoved(from, to);
}

void XValueList::DragEnd() {
    dragRow = -1;
    dragTarget = -1;
    dragTargetValid = false;
    dragPending = false;
    WindowReleaseMouse();
    if (listHandle != nullptr) WindowInvalidate(listHandle, nullptr);
}

intptr_t XValueList::OnRawMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                  uint32_t* handled) {
    *handled = 0;
    if (message == kWmDrawItem) {
        auto* item = reinterpret_cast<clDrawItem*>(lParam);
        if (item == nullptr || item->item != listHandle) return 0;
        PaintRow(*item);
        *handled = 1;
        return 1;
    }
    if (window != listHandle || listHandle == nullptr) return 0;
    int32_t x = clXOf(lParam), y = clYOf(lParam);
    switch (message) {
        case kWmCommand: {
            auto from = reinterpret_cast<clWindowHandle>(lParam);
            uint32_t code = clHighWord(wParam);
            clValueRow* row = Row(control.row);
            if (row == nullptr) return 0;
            if (from == control.buttonHandle && from != nullptr) {
                *handled = 1;
                control.Commit();
                if (row->onButton) row->onButton(this);
                return 0;
            }
            if (from == control.editorHandle && from != nullptr &&
                (code == kEnChange || code == kCbnSelChange || code == kCbnEditChange)) {
                if (control.opening) return 0;
                *handled = 1;
                if (!control.isNameEditor) {
                    control.Commit();
                    if (row->onChange) row->onChange(this);
                }
                return 0;
            }
            return 0;
        }
        case kWmLButtonDown:
        case kWmLButtonDoubleClick: {
            *handled = 1;
            WindowSetFocus(listHandle);
            int32_t row = RowAtPoint(x, y);
            clValueRow* found = Row(row);
            if (allowDragging && found != nullptr && !(row == 0 && found->kind == kRowHeading)) {
                dragPending = true;
                pressedRow = row;
                dragStart = clPoint{x, y};
            }
            Click(x, y);
            return 0;
        }
        case kWmMouseMove:
            if (dragRow >= 0) {
                *handled = 1;
                DragMove(x, y);
            } else if (dragPending && (wParam & kMkLButton) != 0 &&
                       (std::abs(x - dragStart.x) > 4 || std::abs(y - dragStart.y) > 4)) {
                *handled = 1;
                control.Close();
                dragRow = pressedRow;
                WindowCaptureMouse(listHandle);
                DragMove(x, y);
            }
            return 0;
        case kWmLButtonUp:
            if (dragRow >= 0) {
                *handled = 1;
                DragDrop();
            }
            dragPending = false;
            return 0;
        case kWmCaptureChanged:
            if (dragRow >= 0) DragEnd();
            return 0;
        case kWmKeyDown: {
            int32_t selected = SelectedRow();
            int32_t rowPixels = std::max(1, DefaultRowHeight());
            int32_t page = std::max(1, WindowClientRect(listHandle).Height() / rowPixels);
            *handled = 1;
            switch (wParam) {
                case kVkUp: MoveSelection(selected - 1); return 0;
                case kVkDown: MoveSelection(selected + 1); return 0;
                case kVkHome: MoveSelection(0); return 0;
                case kVkEnd: MoveSelection(static_cast<int32_t>(rows.count) - 1); return 0;
                case kVkPrior: MoveSelection(selected - page); return 0;
                case kVkNext: MoveSelection(selected + page); return 0;
                case kVkTab:
                    if (parentWindow != nullptr) WindowPost(parentWindow, kWmKeyDown, kVkTab, 0);
                    return 0;
                case kVkSpace: {
                    clValueRow* row = Row(selected);
                    if (row != nullptr && KindIsToggle(row->kind) && !row->readOnly) Toggle(selected);
                    return 0;
                }
                default:
                    *handled = 0;
                    return 0;
            }
        }
        case kWmEraseBackground: {
            auto* canvas = reinterpret_cast<clCanvas*>(wParam);
            if (canvas != nullptr) canvas->FillRect(WindowClientRect(listHandle), background);
            *handled = 1;
            return 1;
        }
        default:
            return 0;
    }
}

intptr_t XValueList::clListSubclass::OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam,
                                                       intptr_t lParam, uint32_t* handled) {
    return owner->OnRawMessage(window, message, wParam, lParam, handled);
}

void XValueList::clValueControl::Open(int32_t rowIndex) {
    Close();
    clValueRow* found = owner->Row(rowIndex);
    if (found == nullptr || owner->listHandle == nullptr) return;
    row = rowIndex;
    isNameEditor = false;
    opening = true;
    clRect rowRect = ListRowRect(owner->listHandle, rowIndex);
    clRect client = WindowClientRect(owner->listHandle);
    int32_t left = clPackedPixels(found->valueLeft) - 5;
    int32_t right = found->valueWidth != 0 ? left + clPackedPixels(found->valueWidth) : client.right - 2;
    int32_t lineHeight = owner->font.MeasureText(clString(u"Aj")).height;
    int32_t height = lineHeight + XWindow::ScaleUnits(8);
    if (found->kind == kRowEdit && found->lines > 1) height = lineHeight * found->lines + XWindow::ScaleUnits(8);
    clRect buttonRect;
    if (!found->buttonText.IsEmpty()) {
        int32_t buttonWidth = owner->font.MeasureText(found->buttonText).width + XWindow::ScaleUnits(20);
        buttonRect = clRect{right - buttonWidth, 0, right, 0};
        right -= buttonWidth + XWindow::ScaleUnits(3);
    }
    int32_t top = rowRect.top + (rowRect.Height() - height) / 2;
    if (top + height > client.bottom) top = std::max(0, client.bottom - height);
    clControlKind kind = found->kind == kRowChoice    ? kControlDropList
                         : found->kind == kRowSuggest ? kControlComboBox
                         : found->lines > 1           ? kControlMultiLineEdit
                                                      : kControlEdit;
    clRect editorRect{left, top, right, top + height};
    editorHandle = CreateControl(kind, owner->listHandle, kEditorId, clString(), editorRect);
    if (editorHandle == nullptr) {
        row = -1;
        opening = false;
        return;
    }
    WindowSetFont(editorHandle, owner->font.font);
    if (found->kind == kRowSuggest || found->kind == kRowChoice) {
        int32_t chosen = 0;
        for (int64_t i = 0; i < found->choices.Count(); ++i) {
            ComboAddItem(editorHandle, found->choices[i]);
            if (found->choices[i].Equals(found->value)) chosen = static_cast<int32_t>(i);
        }
        if (found->kind == kRowChoice) {
            if (found->choices.Count() > 0) ComboSetSelection(editorHandle, chosen);
        } else {
            WindowSetText(editorHandle, found->value);
        }
    } else {
        WindowSetText(editorHandle, found->value);
        EditSetSelection(editorHandle, 0, -1);
    }
    Attach(editorHandle);
    if (!found->buttonText.IsEmpty()) {
        buttonRect.top = top;
        buttonRect.bottom = top + height;
        buttonHandle = CreateControl(kControlButton, owner->listHandle, kEditorButtonId, found->buttonText, buttonRect);
        if (buttonHandle != nullptr) WindowSetFont(buttonHandle, owner->font.font);
    }
    WindowSetFocus(editorHandle);
    opening = false;
}

void XValueList::clValueControl::Commit() {
    clValueRow* found = owner->Row(row);
    if (found == nullptr || editorHandle == nullptr) return;
    clString text;
    if (found->kind == kRowChoice) {
        int32_t chosen = ComboGetSelection(editorHandle);
        if (chosen < 0) return;  // nothing to supply: the value stays
        text = ComboItemText(editorHandle, chosen);
    } else if (found->kind == kRowEdit || found->kind == kRowSuggest) {
        text = WindowGetText(editorHandle);
    } else {
        return;
    }
    if (isNameEditor) {
        found->name = text;
        owner->rowNames[row] = text;
        owner->BuildRow(*found);
    } else {
        found->value = text;
    }
    owner->RedrawRow(row);
    owner->OnValueCommitted(row);
}

void XValueList::clValueControl::Close() {
    if (editorHandle == nullptr && buttonHandle == nullptr) {
        row = -1;
        return;
    }
    Commit();
    clWindowHandle editor = editorHandle, button = buttonHandle;
    int32_t closedRow = row;
    Detach();
    editorHandle = nullptr;
    buttonHandle = nullptr;
    row = -1;
    if (editor != nullptr) DestroyControl(editor);
    if (button != nullptr) DestroyControl(button);
    owner->RedrawRow(closedRow);
}

intptr_t XValueList::clValueControl::OnSubclassMessage(clWindowHandle, uint32_t message, uintptr_t wParam, intptr_t,
                                                       uint32_t* handled) {
    *handled = 0;
    if (message == kWmKeyDown && wParam == kVkTab && owner->parentWindow != nullptr) {
        *handled = 1;
        WindowPost(owner->parentWindow, kWmKeyDown, kVkTab, 0);
    }
    return 0;
}
