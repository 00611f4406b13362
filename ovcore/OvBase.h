#pragma once
#include <QObject>

// Root of the host's scriptable objects.
class OvBase : public QObject {
    Q_OBJECT
public:
    explicit OvBase(QObject *parent = nullptr) : QObject(parent) {}
    ~OvBase() override = default;
};
