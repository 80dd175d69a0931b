// What the library offers beside its widgets: the folder dialog, colours, the language, the theme.
#include "gui/StyledTools.h"

#include <StyledCtl/DialogHooks.h>
#include <StyledCtl/ExistingDirectory.h>
#include <StyledCtl/ORBCustomCheckBox.h>
#include <StyledCtl/ORBCustomLabel.h>
#include <StyledCtl/ORBCustomMainWindow.h>
#include <StyledCtl/ORBCustomTableWidget.h>
#include <StyledCtl/ORBCustomTitleBar.h>

#include <QLabel>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QVBoxLayout>

class StyledLibraryTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        ORBCustom::setDialogHook({});
        ORBCustom::setLanguage(ORBCustom::LanguageEnglish);
    }

    void theHookChoosesTheFolder()
    {
        QWidget parent;
        ORBCustom::DialogRequest asked;
        ORBCustom::setDialogHook([&](const ORBCustom::DialogRequest& request) {
            asked = request;
            return ORBCustom::DialogAnswer{true, 0, "/chosen"};
        });
        QCOMPARE(
            ORBCustom::getExistingDirectory(&parent, "Export Features", "/start", QFileDialog::ShowDirsOnly),
            QString("/chosen"));
        QCOMPARE(asked.kind, ORBCustom::DialogRequest::ExistingDirectory);
        QCOMPARE(asked.parent, &parent);
        QCOMPARE(asked.title, QString("Export Features"));
        QCOMPARE(asked.text, QString("/start"));
    }

    void theHookMayReplaceItself()
    {
        ORBCustom::setDialogHook([](const ORBCustom::DialogRequest&) {
            ORBCustom::setDialogHook([](const ORBCustom::DialogRequest&) {
                return ORBCustom::DialogAnswer{true, 0, "second"};
            });
            return ORBCustom::DialogAnswer{true, 0, "first"};
        });
        QCOMPARE(ORBCustom::getExistingDirectory(nullptr, "", "", {}), QString("first"));
        QCOMPARE(ORBCustom::getExistingDirectory(nullptr, "", "", {}), QString("second"));
    }

    void withoutAHookTheFolderDialogIsShown_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::newRow("chosen") << true;
        QTest::newRow("cancelled") << false;
    }

    void withoutAHookTheFolderDialogIsShown()
    {
        QFETCH(bool, accept);
        QTemporaryDir start;
        QFile(start.filePath("x.fpk")).open(QIODevice::WriteOnly);
        inNextDialog([&](QDialog* dialog) {
            QCOMPARE(dialog->windowTitle(), QString("Export Features"));
            const QFileDialog* files = qobject_cast<QFileDialog*>(dialog);
            QVERIFY(files);
            QCOMPARE(files->directory().absolutePath(), start.path());
            QVERIFY(files->testOption(QFileDialog::ShowDirsOnly));
            if (accept)
                dialog->accept();
            else
                dialog->reject();
        });
        const QFileDialog::Options options = QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog;
        // A file stands for its folder.
        QCOMPARE(
            ORBCustom::getExistingDirectory(nullptr, "Export Features", start.filePath("x.fpk"), options),
            accept ? start.path() : QString());
    }

    void fontColours()
    {
        const QColor strong = ORBCustom::fontColor(0), text = ORBCustom::fontColor(1),
                     hint = ORBCustom::fontColor(2);
        QVERIFY(strong.lightness() < text.lightness() && text.lightness() < hint.lightness());
        QCOMPARE(ORBCustom::fontColor(9), text);
    }

    void theLanguageChoosesTheFontsAtOnce()
    {
        ORBCustomMainWindow window;
        QLabel* label = new QLabel("x");
        window.cSetCentralWidget(label);
        ORBCustomLabel* count = new ORBCustomLabel(label);
        count->cSetFontSize(32);
        window.show();
        QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageEnglish);
        QCOMPARE(label->font().families().first(), QString("Lato"));
        QCOMPARE(label->font().pixelSize(), 12);
        ORBCustom::setLanguage(ORBCustom::LanguageChinese);
        QCOMPARE(ORBCustom::currentLanguage(), ORBCustom::LanguageChinese);
        for (const QWidget* widget : {static_cast<QWidget*>(label), static_cast<QWidget*>(count),
                                      static_cast<QWidget*>(window.cTitleBar())})
            QCOMPARE(widget->font().families().first(), QString("Microsoft YaHei"));
        QCOMPARE(label->font().pixelSize(), 12);
        QCOMPARE(count->font().pixelSize(), 32);
        ORBCustom::setLanguage(ORBCustom::LanguageEnglish);
        QCOMPARE(label->font().families().first(), QString("Lato"));
        QCOMPARE(int(ORBCustom::LanguageChinese), 0);
        QCOMPARE(int(ORBCustom::LanguageEnglish), 1);
    }

    // What is selected must be told from its neighbours, and its text be read, without shouting.
    void selectionIsCalm()
    {
        ORBCustomMainWindow window;
        QWidget* central = new QWidget;
        QVBoxLayout* layout = new QVBoxLayout(central);
        ORBCustomTableWidget* table = new ORBCustomTableWidget;
        table->setRowCount(2);
        table->setColumnCount(1);
        layout->addWidget(table);
        QTreeWidget* tree = new QTreeWidget;
        tree->setHeaderHidden(true);
        new QTreeWidgetItem(tree, {"a"});
        new QTreeWidgetItem(tree, {"b"});
        layout->addWidget(tree);
        window.cSetCentralWidget(central);
        window.show();
        table->selectRow(0);
        tree->setCurrentItem(tree->topLevelItem(0));
        const QColor inTable = colorAt(*table, table->visualRect(table->model()->index(0, 0)));
        const QColor beside = colorAt(*table, table->visualRect(table->model()->index(1, 0)));
        const QColor inTree = colorAt(*tree, tree->visualItemRect(tree->topLevelItem(0)));
        QCOMPARE(inTable, inTree);
        QCOMPARE(inTable, window.palette().color(QPalette::Highlight));
        QVERIFY(inTable != beside);
        QVERIFY2(qGray(inTable.rgb()) > 225, qPrintable(inTable.name()));
        QVERIFY(qGray(window.palette().color(QPalette::HighlightedText).rgb()) < 80);
    }

    void everythingIsDrawnInTheScreensOwnPixels()
    {
        ORBCustomCheckBox box;
        box.setChecked(true);
        box.resize(30, 30);
        QImage fine(60, 60, QImage::Format_ARGB32_Premultiplied);
        fine.setDevicePixelRatio(2);
        fine.fill(Qt::white);
        box.render(&fine);
        // Blown up from half the size, every pixel would have three alike beside it.
        int different = 0;
        for (int y = 0; y < 60; y += 2)
            for (int x = 0; x < 60; x += 2)
                different +=
                    fine.pixel(x, y) != fine.pixel(x + 1, y) || fine.pixel(x, y) != fine.pixel(x, y + 1);
        QVERIFY2(different > 20, qPrintable(QString::number(different)));
    }

private:
    static QColor colorAt(QAbstractItemView& view, const QRect& cell)
    {
        return view.viewport()->grab().toImage().pixelColor(cell.right() - 20, cell.center().y());
    }
};

QTEST_MAIN(StyledLibraryTest)
#include "styled_library_test.moc"
