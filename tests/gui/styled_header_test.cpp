// The headers: what a click or a key does to sorting and to the check box.
#include "gui/StyledTools.h"

#include <StyledCtl/ORBCustomCheckHeaderView.h>
#include <StyledCtl/ORBCustomSortHeaderView.h>
#include <StyledCtl/ORBCustomTableWidget.h>

namespace
{

// Column 0 has the check box, columns 1 and 2 sort, column 3 does nothing.
struct Fixture
{
    Fixture()
    {
        table.setHorizontalHeader(header);
        table.setColumnCount(4);
        table.setHorizontalHeaderLabels({"", "Model Name", "Serial Number", "Notes"});
        table.setRowCount(5);
        header->setCheckBoxVisible(0, true);
        header->enableSort(1, true);
        header->enableSort(2, true);
        table.resize(500, 300);
        table.show();
    }

    void fill(int row)
    {
        for (int column = 0; column < 4; ++column)
            table.setItem(row, column, new QTableWidgetItem);
        table.setCheckBoxVisible(row, 0, true);
    }

    QPoint middle(int column) const
    {
        return QPoint(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                      header->height() / 2);
    }
    void click(int column) { QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle(column)); }

    ORBCustomTableWidget table;
    ORBCustomCheckHeaderView* header = new ORBCustomCheckHeaderView(&table);
    QSignalSpy sorted{header, &ORBCustomSortHeaderView::SigSortByColumn};
    QSignalSpy turned{header, &ORBCustomCheckHeaderView::SigCheckStateChange};
};

} // namespace

class StyledHeaderTest : public QObject
{
    Q_OBJECT

private slots:
    void aSortingColumnBeginsAscendingAndTurnsRound()
    {
        Fixture f;
        f.click(1);
        f.click(1);
        f.click(1);
        f.click(2);
        f.click(1);
        QCOMPARE(taken(f.sorted), Calls({{1, true}, {1, false}, {1, true}, {2, true}, {1, true}}));
    }

    void aDoubleClickIsTwoClicks()
    {
        Fixture f;
        f.click(1);
        QTest::mouseDClick(f.header->viewport(), Qt::LeftButton, {}, f.middle(1));
        QCOMPARE(taken(f.sorted), Calls({{1, true}, {1, false}}));
    }

    void otherColumnsDoNotSort()
    {
        Fixture f;
        f.click(3);
        f.header->enableSort(2, false);
        f.click(2);
        QCOMPARE(f.sorted.count() + f.turned.count(), 0);
        QVERIFY(!f.header->isSortEnabled(2));
    }

    void theArrowStaysWhenOtherColumnsAreClicked()
    {
        Fixture f;
        f.click(1);
        f.click(1);
        for (const int other : {0, 3}) {
            f.click(other);
            QCOMPARE(f.header->sortIndicatorSection(), 1);
            QCOMPARE(f.header->sortIndicatorOrder(), Qt::DescendingOrder);
        }
        f.click(1);
        QCOMPARE(f.sorted.last(), QVariantList({1, true}));
    }

    void draggingAnEdgeDoesNotSort()
    {
        Fixture f;
        const int before = f.header->sectionSize(1);
        drag(f.header->viewport(), QPoint(f.header->sectionViewportPosition(2) - 1, 8), QPoint(30, 0));
        QCOMPARE(f.header->sectionSize(1), before + 30);
        QCOMPARE(f.sorted.count(), 0);
        QVERIFY(!f.header->isPressed());
    }

    void aClickOnTheBoxTellsTheNewState()
    {
        Fixture f;
        QVector<Qt::CheckState> seen;
        connect(f.header, &ORBCustomCheckHeaderView::SigCheckStateChange,
                [&](int column) { seen << f.header->checkState(column); });
        f.click(0);
        f.click(0);
        f.header->setCheckState(0, Qt::PartiallyChecked, false);
        f.click(0);
        QCOMPARE(seen, QVector<Qt::CheckState>({Qt::Checked, Qt::Unchecked, Qt::Checked}));
        QCOMPARE(taken(f.turned), Calls({{0}, {0}, {0}}));
        QCOMPARE(f.sorted.count(), 0);
    }

    void onlyTheNotifyingWayTells()
    {
        Fixture f;
        f.header->setCheckState(0, Qt::Checked, false);
        QCOMPARE(f.header->checkState(0), Qt::Checked);
        QCOMPARE(f.turned.count(), 0);
        f.header->setCheckState(0, Qt::Checked, true);
        QCOMPARE(taken(f.turned), Calls({{0}}));
        f.header->setCheckState(3, Qt::Checked, true); // no box there
        QCOMPARE(f.header->checkState(3), Qt::Unchecked);
        QCOMPARE(f.turned.count(), 0);
        f.header->setCheckBoxVisible(0, false);
        f.click(0);
        QCOMPARE(f.header->checkState(0), Qt::Unchecked);
        QCOMPARE(f.turned.count(), 0);
    }

    void tickingAllLeavesPlaceholdersAndDisabledRowsAlone()
    {
        Fixture f;
        for (const int row : {0, 1, 2})
            f.fill(row);
        f.table.setCheckBoxEnable(1, 0, false);
        QSignalSpy cells(&f.table, &ORBCustomTableWidget::SigCellCheckStateChanged);
        connect(f.header, &ORBCustomCheckHeaderView::SigCheckStateChange, [&](int column) {
            for (int row = 0; row < f.table.rowCount(); ++row)
                f.table.setCellCheckState(row, column, f.header->checkState(column), false);
        });
        const auto ticked = [&] {
            QList<int> rows;
            for (int row = 0; row < f.table.rowCount(); ++row)
                if (f.table.cellCheckState(row, 0) == Qt::Checked)
                    rows << row;
            return rows;
        };
        f.click(0);
        QCOMPARE(ticked(), QList<int>({0, 2}));
        QVERIFY(!f.table.IsHaveCheckBox(3, 0));
        QVERIFY(!f.table.item(4, 0));
        f.click(0);
        QCOMPARE(ticked(), QList<int>());
        QCOMPARE(cells.count(), 0);
    }

    void inAColumnThatAlsoSortsOnlyTheBoxTurnsIt()
    {
        Fixture f;
        f.header->setCheckBoxVisible(1, true);
        f.click(1);
        QCOMPARE(f.sorted.count(), 1);
        QCOMPARE(f.turned.count(), 0);
        QTest::mouseClick(f.header->viewport(), Qt::LeftButton, {},
                          QPoint(f.header->sectionViewportPosition(1) + 16, f.header->height() / 2));
        QCOMPARE(f.sorted.count(), 1);
        QCOMPARE(taken(f.turned), Calls({{1}}));
    }

    void theKeyboardReachesEveryColumnThatDoesSomething()
    {
        Fixture f;
        f.table.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&f.table));
        f.table.setColumnHidden(1, true);
        f.header->setFocus(Qt::TabFocusReason);
        QTest::keyClick(f.header, Qt::Key_Space);
        QCOMPARE(taken(f.turned), Calls({{0}}));
        QTest::keyClick(f.header, Qt::Key_Right); // over the hidden one
        QTest::keyClick(f.header, Qt::Key_Return);
        QTest::keyClick(f.header, Qt::Key_Right); // the last one does nothing
        QTest::keyClick(f.header, Qt::Key_Enter);
        QCOMPARE(taken(f.sorted), Calls({{2, true}, {2, false}}));
        QCOMPARE(f.header->accessibleDescription(), QString("Serial Number"));
        QTest::keyClick(f.header, Qt::Key_Left);
        QTest::keyClick(f.header, Qt::Key_Space);
        QCOMPARE(taken(f.turned), Calls({{0}}));
    }

    void theHeaderHasANameInTheUsersLanguage()
    {
        Fixture f;
        QCOMPARE(f.header->accessibleName(), QString("Column headers"));
        Brackets language;
        QCoreApplication::processEvents();
        QCOMPARE(f.header->accessibleName(), QString("[Column headers]"));
    }

    void aDisabledHeaderTakesNoClicks()
    {
        Fixture f;
        f.table.setEnabled(false);
        f.click(0);
        f.click(1);
        QCOMPARE(f.sorted.count() + f.turned.count(), 0);
    }
};

QTEST_MAIN(StyledHeaderTest)
#include "styled_header_test.moc"
