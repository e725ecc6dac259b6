#include "harvests/ui/rangenote.h"

#include "harvests/filter.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace tarvik {

RangeNote::RangeNote(Einstellungen& settings, QWidget* parent)
    : QWidget(parent), m_settings(settings), m_text(new QLabel), m_clear(new QPushButton(QStringLiteral("Alle Hiebe zeigen")))
{
    setObjectName(QStringLiteral("zeitraumhinweis"));
    m_text->setObjectName(QStringLiteral("bezzeitraum"));
    m_text->setStyleSheet(QStringLiteral("font-weight: bold"));
    m_clear->setObjectName(QStringLiteral("comzeitraum"));
    m_clear->setAutoDefault(false);
    m_clear->setToolTip(QStringLiteral("Schaltet den Zeitraum der Auswertungen aus; Jahre und Daten bleiben für später erhalten."));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_text);
    layout->addWidget(m_clear);
    connect(m_clear, &QPushButton::clicked, this, [this] {
        clearRange(m_settings);
        refresh();
        emit cleared();
    });
    m_text->setText(rangeNote(m_settings).value_or(QString()));
    if (m_text->text().isEmpty())
        hide(); // shown with its window otherwise; never as a window of its own
}

void RangeNote::refresh()
{
    const std::optional<QString> note = rangeNote(m_settings);
    m_text->setText(note.value_or(QString()));
    setVisible(note.has_value());
}

} // namespace tarvik
