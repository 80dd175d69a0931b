// The table: check boxes, enabled flags and tips belong to their rows.
#include "gui/StyledTools.h"

#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>

#include <QToolTip>

namespace
{

constexpr int kColumns = 3;

// A table of so many placeholder rows, shown.
struct Table : ORBCustomTableWidget
{
    explicit Table(int placeholders)
    {
        setHorizontalHeader(new ORBCustomCheckHeaderView(this));
        setColumnCount(kColumns);
        setRowCount(placeholders);
        setAlternatingRowColors(true);
        QTableWidget::resize(400, 400);
        show();
    }

    void fill(int row, const QString& name)
    {
        for (int column = 0; column < kColumns; ++column)
            setItem(row, column, new QTableWidgetItem);
        setCheckBoxVisible(row, 0, true);
        item(row, 1)->setText(name);
    }

    void click(int row, int column)
    {
        QTest::mouseClick(viewport(), Qt::LeftButton, {}, visualRect(model()->index(row, column)).center());
    }

    // "name box-state enabled tip [hidden]" of every row; "-" for placeholders.
    QStringList rows() const
    {
        QStringList lines;
        for (int row = 0; row < rowCount(); ++row) {
            const QString state = cellCheckState(row, 0) == Qt::Checked ? "on" : "off";
            const QString enabled = cellCheckEnable(row, 0) ? "free" : "grey";
            lines << (item(row, 1) ? QString("%1 %2 %3 '%4'%5")
                                         .arg(item(row, 1)->text(), state, enabled, detailTip(row, 2),
                                              isRowHidden(row) ? " hidden" : "")
                                   : QString(IsHaveCheckBox(row, 0) ? "box" : "-"));
        }
        return lines;
    }
};

// Three rows that differ in everything, and two placeholders.
struct FilledTable : Table
{
    FilledTable() : Table(5)
    {
        fill(0, "b");
        fill(1, "c");
        fill(2, "a");
        setCellCheckState(0, 0, Qt::Checked, false);
        setCheckBoxEnable(1, 0, false);
        setDetailTip(2, 2, "why a failed");
    }
};

} // namespace

class StyledTableTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewCheckBoxIsEnabledAndNotChecked()
    {
        Table table(1);
        table.fill(0, "a");
        QVERIFY(table.IsHaveCheckBox(0, 0));
        QVERIFY(table.cellCheckEnable(0, 0));
        QCOMPARE(table.cellCheckState(0, 0), Qt::Unchecked);
        QVERIFY(!table.IsHaveCheckBox(0, 1));
    }

    void whereNoCheckBoxIsNothingCanBeChecked()
    {
        Table table(2);
        table.fill(0, "a");
        table.setCheckBoxVisible(0, 0, false);
        table.setCheckBoxVisible(1, 0, true); // without an item
        for (const int row : {0, 1, 7}) {
            table.setCheckBoxEnable(row, 0, true);
            table.setCellCheckState(row, 0, Qt::Checked, false);
            QVERIFY(!table.IsHaveCheckBox(row, 0));
            QVERIFY(!table.cellCheckEnable(row, 0));
            QCOMPARE(table.cellCheckState(row, 0), Qt::Unchecked);
        }
    }

    void aHiddenCheckBoxComesBackUnchecked()
    {
        Table table(1);
        table.fill(0, "a");
        table.setCellCheckState(0, 0, Qt::Checked, false);
        table.setCheckBoxVisible(0, 0, true); // changes nothing
        QCOMPARE(table.cellCheckState(0, 0), Qt::Checked);
        table.setCheckBoxVisible(0, 0, false);
        table.setCheckBoxVisible(0, 0, true);
        QCOMPARE(table.cellCheckState(0, 0), Qt::Unchecked);
    }

    void aDisabledCheckBoxIsNotCheckedButCanBeUnchecked()
    {
        Table table(1);
        table.fill(0, "a");
        table.setCellCheckState(0, 0, Qt::Checked, false);
        table.setCheckBoxEnable(0, 0, false);
        QCOMPARE(table.cellCheckState(0, 0), Qt::Checked);
        table.setCellCheckState(0, 0, Qt::Unchecked, false);
        QCOMPARE(table.cellCheckState(0, 0), Qt::Unchecked);
        table.setCellCheckState(0, 0, Qt::Checked, false);
        QCOMPARE(table.cellCheckState(0, 0), Qt::Unchecked);
        table.setCheckBoxEnable(0, 0, true);
        table.setCellCheckState(0, 0, Qt::Checked, false);
        QCOMPARE(table.cellCheckState(0, 0), Qt::Checked);
    }

    void onlyTheNotifyingWayTells()
    {
        FilledTable table;
        QSignalSpy told(&table, &ORBCustomTableWidget::SigCellCheckStateChanged);
        table.setCellCheckState(2, 0, Qt::Checked, false);
        table.setCheckBoxEnable(2, 0, false);
        table.setCheckBoxVisible(2, 0, false);
        QCOMPARE(told.count(), 0);
        table.setCellCheckState(0, 0, Qt::Unchecked, true);
        QCOMPARE(taken(told), Calls({{0, 0}}));
        table.setCellCheckState(0, 0, Qt::Unchecked, true); // nothing changes, yet it was asked for
        QCOMPARE(taken(told), Calls({{0, 0}}));
    }

    void aClickTurnsTheBoxAndTellsWithTheNewState()
    {
        FilledTable table;
        QVector<Qt::CheckState> seen;
        connect(&table, &ORBCustomTableWidget::SigCellCheckStateChanged,
                [&](int row, int column) { seen << table.cellCheckState(row, column); });
        table.click(2, 0);
        table.click(2, 0);
        table.click(0, 0);
        QCOMPARE(seen, QVector<Qt::CheckState>({Qt::Checked, Qt::Unchecked, Qt::Unchecked}));
    }

    void clicksElsewhereTurnNothing()
    {
        FilledTable table;
        const QStringList before = table.rows();
        QSignalSpy told(&table, &ORBCustomTableWidget::SigCellCheckStateChanged);
        table.click(1, 0); // disabled
        table.click(3, 0); // a placeholder
        table.click(2, 1); // another column
        const QPoint box = table.visualRect(table.model()->index(2, 0)).center();
        QTest::mouseClick(table.viewport(), Qt::RightButton, {}, box);
        QTest::mousePress(table.viewport(), Qt::LeftButton, {}, box); // let go over another row
        QTest::mouseRelease(table.viewport(), Qt::LeftButton, {},
                            table.visualRect(table.model()->index(0, 0)).center());
        QCOMPARE(told.count(), 0);
        QCOMPARE(table.rows(), before);
    }

    void theSpaceBarTurnsTheBoxOfTheCurrentRow()
    {
        FilledTable table;
        QSignalSpy told(&table, &ORBCustomTableWidget::SigCellCheckStateChanged);
        table.setCurrentCell(2, 1);
        QTest::keyClick(&table, Qt::Key_Space);
        QCOMPARE(table.cellCheckState(2, 0), Qt::Checked);
        QCOMPARE(taken(told), Calls({{2, 0}}));
        QTest::keyClick(&table, Qt::Key_Up); // the disabled one
        QCOMPARE(table.currentRow(), 1);
        QTest::keyClick(&table, Qt::Key_Space);
        table.setCurrentCell(4, 0); // a placeholder
        QTest::keyClick(&table, Qt::Key_Space);
        QCOMPARE(told.count(), 0);
        QCOMPARE(table.cellCheckState(1, 0), Qt::Unchecked);
    }

    void tabLeavesTheTable()
    {
        QWidget window;
        QWidget after(&window);
        ORBCustomTableWidget table(&window);
        table.setRowCount(2);
        table.setColumnCount(2);
        after.setFocusPolicy(Qt::StrongFocus);
        QWidget::setTabOrder(&table, &after);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        table.setFocus();
        QTest::keyClick(&table, Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), &after);
    }

    void everythingStaysWithItsRowWhenSorted()
    {
        FilledTable table;
        table.setRowHidden(2, true);
        table.sortItems(1, Qt::AscendingOrder);
        QCOMPARE(table.rows(), QStringList({"a off free 'why a failed' hidden", "b on free ''",
                                            "c off grey ''", "-", "-"}));
        table.sortItems(1, Qt::DescendingOrder);
        QCOMPARE(table.rows(), QStringList({"c off grey ''", "b on free ''",
                                            "a off free 'why a failed' hidden", "-", "-"}));
    }

    void everythingStaysWithItsRowWhenRowsComeAndGo()
    {
        FilledTable table;
        table.insertRow(1);
        QCOMPARE(table.rows(),
                 QStringList({"b on free ''", "-", "c off grey ''", "a off free 'why a failed'", "-", "-"}));
        table.removeRow(0);
        QCOMPARE(table.rows(), QStringList({"-", "c off grey ''", "a off free 'why a failed'", "-", "-"}));
        table.fill(0, "d");
        QCOMPARE(table.rows().first(), QString("d off free ''"));
    }

    void aClickAfterSortingTurnsTheRowThatIsSeenThere()
    {
        FilledTable table;
        table.sortItems(1, Qt::AscendingOrder);
        table.click(0, 0);
        QCOMPARE(table.rows().first(), QString("a on free 'why a failed'"));
    }

    void tipsAreForEyesAndScreenReaders()
    {
        Table table(2);
        table.fill(0, "a");
        table.setDetailTip(0, 2, "<b>3</b> nodes failed");
        QCOMPARE(table.detailTip(0, 2), QString("<b>3</b> nodes failed"));
        QCOMPARE(table.item(0, 2)->data(Qt::AccessibleDescriptionRole).toString(),
                 QString("<b>3</b> nodes failed"));
        table.setDetailTip(0, 2, "");
        QVERIFY(!table.item(0, 2)->data(Qt::ToolTipRole).isValid());
        QVERIFY(!table.item(0, 2)->data(Qt::AccessibleDescriptionRole).isValid());
        table.setDetailTip(1, 2, "nobody is here");
        QCOMPARE(table.detailTip(1, 2), QString());
    }

    void aTipIsShownAsPlainText()
    {
        Table table(1);
        table.fill(0, "a");
        table.setDetailTip(0, 2, "<b>3</b> nodes failed");
        const QPoint place = table.visualRect(table.model()->index(0, 2)).center();
        QHelpEvent event(QEvent::ToolTip, place, table.viewport()->mapToGlobal(place));
        QApplication::sendEvent(table.viewport(), &event);
        QVERIFY(QToolTip::isVisible());
        QVERIFY2(QToolTip::text().contains("&lt;b&gt;3&lt;/b&gt;"), qPrintable(QToolTip::text()));
        QToolTip::hideText();
    }

    void checkBoxesHaveANameForScreenReaders()
    {
        Table table(1);
        table.fill(0, "a");
        QCOMPARE(table.item(0, 0)->data(Qt::AccessibleTextRole).toString(), QString("Selected"));
        Brackets language;
        QCoreApplication::processEvents();
        QCOMPARE(table.item(0, 0)->data(Qt::AccessibleTextRole).toString(), QString("[Selected]"));
    }

    void aColumnMadeWiderLeavesTheStretchingOneInSight()
    {
        Table table(1);
        QHeaderView* header = table.horizontalHeader();
        header->setSectionResizeMode(2, QHeaderView::Stretch);
        table.connetSectionResized(true);
        const QPoint edge(header->sectionViewportPosition(1) + header->sectionSize(1) - 1, 8);
        drag(header->viewport(), edge, QPoint(900, 0));
        QCOMPARE(header->sectionSize(0) + header->sectionSize(1) + header->minimumSectionSize(),
                 table.viewport()->width());
        table.connetSectionResized(false);
        const QPoint edgeNow(header->sectionViewportPosition(1) + header->sectionSize(1) - 1, 8);
        drag(header->viewport(), edgeNow, QPoint(900, 0));
        QVERIFY(header->sectionSize(0) + header->sectionSize(1) > table.viewport()->width());
    }
};

QTEST_MAIN(StyledTableTest)
#include "styled_table_test.moc"
