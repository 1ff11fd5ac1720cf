// The Qt back end of dialogs.h: Qt's file dialogs, and drops through the
// window widget (clQtWindow turns a drop of local files into kWmDropFiles
// with the path list as wParam).
#include <QFileDialog>
#include <QFileInfo>
#include <QStringList>

#include "foundation/stringlist.h"
#include "toolkit/dialogs.h"
#include "toolkit/qt/qtcanvas.h"
#include "toolkit/qt/qtwidgets.h"

bool ChooseFiles(clWindowHandle owner, const clString& title, const clStringList& filters,
                 const clString& initialFolder, clStringList& chosen) {
    chosen.Clear();
    // "Display\rpatterns" becomes Qt's "Display (patterns)", blanks between.
    QStringList lines;
    for (int64_t i = 0; i < filters.Count(); ++i) {
        QString entry = ToQString(filters[i]);
        qsizetype cr = entry.indexOf(QChar(u'\r'));
        QString shown = cr < 0 ? entry : entry.left(cr);
        QString patterns = cr < 0 ? QStringLiteral("*") : entry.mid(cr + 1);
        patterns.replace(QChar(u';'), QChar(u' '));
        // Qt reads the last bracket of a line as its patterns.
        shown.replace(QChar(u'('), QChar(u'[')).replace(QChar(u')'), QChar(u']'));
        lines << shown + QStringLiteral(" (") + patterns + QStringLiteral(")");
    }
    QStringList files = QFileDialog::getOpenFileNames(WidgetOf(owner), ToQString(title), ToQString(initialFolder),
                                                      lines.join(QStringLiteral(";;")));
    for (const QString& file : files) chosen.Add(FromQString(file));
    return chosen.Count() > 0;
}

clString ChooseSaveFile(clWindowHandle owner, const clString& title, const clString& filter,
                        const clString& defaultExtension) {
    QString entry = ToQString(filter);
    qsizetype cr = entry.indexOf(QChar(u'\r'));
    QString shown = cr < 0 ? entry : entry.left(cr);
    QString patterns = cr < 0 ? QStringLiteral("*") : entry.mid(cr + 1);
    patterns.replace(QChar(u';'), QChar(u' '));
    shown.replace(QChar(u'('), QChar(u'[')).replace(QChar(u')'), QChar(u']'));
    QString file = QFileDialog::getSaveFileName(WidgetOf(owner), ToQString(title), QString(),
                                                shown + QStringLiteral(" (") + patterns + QStringLiteral(")"));
    if (file.isEmpty()) return clString();
    QString extension = ToQString(defaultExtension);
    if (!extension.isEmpty() && QFileInfo(file).suffix().isEmpty()) file += QStringLiteral(".") + extension;
    return FromQString(file);
}

clString ChooseFolder(clWindowHandle owner, const clString& title) {
    return FromQString(QFileDialog::getExistingDirectory(WidgetOf(owner), ToQString(title)));
}

void WindowAcceptDrops(clWindowHandle window, bool accept) {
    if (QWidget* widget = WidgetOf(window)) widget->setAcceptDrops(accept);
}

void DroppedPaths(uintptr_t drop, clStringList& paths) {
    paths.Clear();
    const auto* dropped = reinterpret_cast<const clStringList*>(drop);
    if (dropped == nullptr) return;
    for (int64_t i = 0; i < dropped->Count(); ++i) paths.Add((*dropped)[i]);
}

void SimulateDrop(clWindowHandle window, const clStringList& paths) {
    if (QWidget* widget = WidgetOf(window)) RouteMessage(widget, kWmDropFiles, reinterpret_cast<uintptr_t>(&paths), 0);
}

void WindowBringToFront(clWindowHandle window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    widget->raise();
    widget->activateWindow();
}
