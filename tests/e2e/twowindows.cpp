// One process, two windows, each with a menu bar of its own (like a document
// and a spreadsheet open in one office suite): a target for reading the
// menus of the window the user is in.
#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QTextEdit>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("kestrio-two-windows"));
    QMainWindow letter, sheet;
    letter.setWindowTitle(QStringLiteral("Letter"));
    letter.menuBar()->addMenu(QStringLiteral("Text"))->addAction(QStringLiteral("Bold"));
    sheet.setWindowTitle(QStringLiteral("Sheet"));
    sheet.menuBar()->addMenu(QStringLiteral("Cells"))->addAction(QStringLiteral("Sum"));
    // Something to type into, as in any document window: it takes the focus.
    letter.setCentralWidget(new QTextEdit);
    sheet.setCentralWidget(new QTextEdit);
    letter.setGeometry(100, 100, 400, 300);
    sheet.setGeometry(600, 100, 400, 300);
    letter.show();
    sheet.show();
    return app.exec();
}
