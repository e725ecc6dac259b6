#include "devices/serialsource.h"
#include "common/systemerror.h"

namespace tarvik {
namespace {

// The port's own texts are English and technical; the user reads German.
QString reason(const QSerialPort& port)
{
    switch (port.error()) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("Diese Schnittstelle gibt es an diesem Rechner nicht.");
    case QSerialPort::PermissionError:
        return QStringLiteral("Der Zugriff wurde verweigert: die Schnittstelle wird von einem anderen Programm benutzt, oder es "
                              "fehlt das Recht dazu (unter Linux die Gruppe \"dialout\").");
    case QSerialPort::OpenError:
        return QStringLiteral("Die Schnittstelle ist bereits geöffnet.");
    default:
        return QStringLiteral("Die Schnittstelle meldet einen Fehler: %1").arg(germanErrorText(port.errorString()));
    }
}

} // namespace

SerialByteSource::SerialByteSource(int quietMs) : m_quietMs(quietMs)
{
    QObject::connect(&m_port, &QSerialPort::readyRead, &m_port, [this] { m_received += m_port.readAll(); });
}

QString SerialByteSource::open(const QString& portName)
{
    m_received.clear();
    m_port.setPortName(portName);
    if (!m_port.open(QIODevice::ReadOnly))
        return reason(m_port);
    const bool set = m_port.setBaudRate(QSerialPort::Baud9600) && m_port.setDataBits(QSerialPort::Data8)
                     && m_port.setParity(QSerialPort::NoParity) && m_port.setStopBits(QSerialPort::OneStop)
                     && m_port.setFlowControl(QSerialPort::NoFlowControl);
    if (!set) {
        const QString why = reason(m_port);
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
