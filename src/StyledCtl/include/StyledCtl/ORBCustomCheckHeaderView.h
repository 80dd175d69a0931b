#pragma once

#include "ORBCustomSortHeaderView.h"

// Columns that have a check box in their header. In a column that also sorts only the box turns it.
class STYLEDCTL_API ORBCustomCheckHeaderView : public ORBCustomSortHeaderView
{
    Q_OBJECT

public:
    explicit ORBCustomCheckHeaderView(QWidget* parent = nullptr);
    ~ORBCustomCheckHeaderView() override;

    void setCheckBoxVisible(int column, bool visible);
    Qt::CheckState checkState(int column) const;
    // `notify`: SigCheckStateChange is emitted, also when nothing changed. Ignored where no check box is.
    void setCheckState(int column, Qt::CheckState state, bool notify);

signals:
    // The state is the new one already.
    void SigCheckStateChange(int column);

protected:
    void clickSection(int column, const QPoint* position) override;
    bool isClickable(int column) const override;
    QRect textRect(const QRect& section, int column) const override;
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;

private:
    class Private;
    QRect boxRect(const QRect& section, int column) const;
    std::unique_ptr<Private> d;
};
