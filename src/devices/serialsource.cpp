#include "devices/serialsource.h"

namespace tarvik {

SerialByteSource::SerialByteSource(int quietMs) : m_quietMs(quietMs)
{
    QObject::connect(&m_port, &QSerialPort::readyRead, &m_port, [this] { m_received += m_port.readAll(); });
}

QString SerialByteSource::open(const QString& portName)
{
    m_received.clear();
    m_port.setPortName(portName);
    if (!m_port.open(QIODevice::ReadOnly))
        return m_port.errorString();
    const bool set = m_port.setBaudRate(QSerialPort::Baud9600) && m_port.setDataBits(QSerialPort::Data8)
                     && m_port.setParity(QSerialPort::NoParity) && m_port.setStopBits(QSerialPort::OneStop)
                     && m_port.setFlowControl(QSerialPort::NoFlowControl);
    if (!set) {
        const QString why = m_port.errorString();
        m_port.close();
        return why;
    }
    return QString();
}

QByteArray SerialByteSource::finish()
{
    if (m_port.isOpen()) {
        m_received += m_port.readAll();
        while (m_port.waitForReadyRead(m_quietMs))
            m_received += m_port.readAll();
        m_port.close();
    }
    return std::exchange(m_received, QByteArray());
}

} // namespace tarvik
