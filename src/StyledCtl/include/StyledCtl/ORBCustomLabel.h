#pragma once

#include "ORBCustomObject.h"

#include <QLabel>

class STYLEDCTL_API ORBCustomLabel : public QLabel, public ORBCustomObject
{
    Q_OBJECT

public:
    explicit ORBCustomLabel(QWidget* parent = nullptr);
    ~ORBCustomLabel() override;

protected:
    void cStyleChanged() override;
    void paintEvent(QPaintEvent* event) override;
};
