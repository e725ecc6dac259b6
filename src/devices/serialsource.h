#pragma once
// The calliper's serial port through Qt SerialPort: 9600 baud, no parity, 8 data bits, 1 stop
// bit. Bytes are collected as they arrive while the message box waits for the user.
#include "devices/collect.h"

#include <QSerialPort>

namespace tarvik {

class SerialByteSource final : public ByteSource {
public:
    // How long the port must stay silent after the user confirmed before it is closed.
    explicit SerialByteSource(int quietMs = 400);
    QString open(const QString& portName) override;
    QByteArray finish() override;

private:
    QSerialPort m_port;
    QByteArray m_received;
    int m_quietMs;
};

} // namespace tarvik
