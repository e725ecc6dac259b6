#include "devices/ui/harvestermapping.h"

#include "common/ui/gridformat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

const QString NotTaken = QStringLiteral("(nicht übernehmen)");

QTableWidget* table(const QString& name, const QStringList& captions, int rows)
{
    auto* t = new QTableWidget(rows, int(captions.size()));
    t->setObjectName(name);
    t->setHorizontalHeaderLabels(captions);
    t->verticalHeader()->hide();
    t->setSelectionMode(QAbstractItemView::NoSelection);
    t->setEditTriggers(QAbstractItemView::NoEditTriggers);
    t->horizontalHeader()->setStretchLastSection(true);
    return t;
}

QTableWidgetItem* item(const QString& text)
{
    auto* i = new QTableWidgetItem(text);
    i->setFlags(Qt::ItemIsEnabled);
    return i;
}

} // namespace

HarvesterMappingDialog::HarvesterMappingDialog(const HarvesterFile& file, const HarvesterMapping& mapping, const QStringList& species,
                                               const QStringList& qualities, QWidget* parent)
    : QDialog(parent), m_file(file)
{
    setObjectName(QStringLiteral("EF_Harvester_Zuordnung"));
    setWindowTitle(QStringLiteral("Harvester-Datei: Baumarten und Produkte zuordnen"));
    QList<int> perSpecies(file.speciesNames.size()), perProduct(file.productNames.size());
    for (const HarvesterLog& log : file.logs) {
        ++perSpecies[log.species];
        ++perProduct[log.product];
    }

    m_species = table(QStringLiteral("gridbaumarten"),
                      {QStringLiteral("Baumart in der Datei"), QStringLiteral("Stämme"), QStringLiteral("Baumart in Tarvik")},
                      int(file.speciesNames.size()));
    for (int row = 0; row < file.speciesNames.size(); ++row) {
        const QString& name = file.speciesNames[row];
        m_species->setItem(row, 0, item(name));
        m_species->setItem(row, 1, item(QString::number(perSpecies[row])));
        auto* choice = new QComboBox;
        choice->setObjectName(QStringLiteral("kombaumart(%1)").arg(row));
        choice->addItem(NotTaken);
        choice->addItems(species);
        const qsizetype at = species.indexOf(mapping.species.value(name));
        choice->setCurrentIndex(at < 0 ? 0 : int(at) + 1);
        m_species->setCellWidget(row, 2, choice);
    }

    m_products = table(QStringLiteral("gridprodukte"),
                       {QStringLiteral("Produkt"), QStringLiteral("Stämme"), QStringLiteral("Übernehmen"), QStringLiteral("Güteklasse")},
                       int(file.productNames.size()));
    for (int row = 0; row < file.productNames.size(); ++row) {
        const QString& name = file.productNames[row];
        m_products->setItem(row, 0, item(name));
        m_products->setItem(row, 1, item(QString::number(perProduct[row])));
        auto* take = new QCheckBox;
        take->setObjectName(QStringLiteral("konprodukt(%1)").arg(row));
        take->setChecked(!mapping.excludedProducts.contains(name));
        m_products->setCellWidget(row, 2, take);
        auto* quality = new QComboBox;
        quality->setObjectName(QStringLiteral("komguete(%1)").arg(row));
        quality->addItem(QString());
        quality->addItems(qualities);
        const qsizetype at = qualities.indexOf(mapping.productQuality.value(name));
        quality->setCurrentIndex(at < 0 ? 0 : int(at) + 1);
        m_products->setCellWidget(row, 3, quality);
    }
    for (QTableWidget* t : {m_species, m_products}) {
        formatTableItems(t);
        t->resizeColumnsToContents();
        t->setColumnWidth(0, std::max(t->columnWidth(0), 180));
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("comok"));
    buttons->button(QDialogButtonBox::Ok)->setText(QStringLiteral("Weiter"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("comabbrechen"));
    buttons->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("Abbrechen"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(QStringLiteral("Datei \"%1\" (StanForD 2010, Version %2): %3 Bäume, %4 Stämme aus Einzelbaumaufarbeitung.\n"
                                            "Ordnen Sie jeder Baumart der Datei eine Baumart von Tarvik zu. Stämme einer Baumart "
                                            "ohne Zuordnung und Stämme nicht übernommener Produkte werden nicht eingelesen.")
                                 .arg(file.fileName, file.version)
                                 .arg(file.stems)
                                 .arg(file.logs.size()));
    intro->setWordWrap(true);
    layout->addWidget(intro);
    layout->addWidget(new QLabel(QStringLiteral("Baumarten:")));
    layout->addWidget(m_species, 1);
    layout->addWidget(new QLabel(QStringLiteral("Produkte:")));
    layout->addWidget(m_products, 2);
    layout->addWidget(buttons);
    resize(660, 640);
}

HarvesterMapping HarvesterMappingDialog::mapping() const
{
    HarvesterMapping m;
    m.products = m_file.productNames;
    for (int row = 0; row < m_species->rowCount(); ++row) {
        const auto* choice = static_cast<QComboBox*>(m_species->cellWidget(row, 2));
        m.species.insert(m_file.speciesNames[row], choice->currentIndex() > 0 ? choice->currentText() : QString());
    }
    for (int row = 0; row < m_products->rowCount(); ++row) {
        const QString& name = m_file.productNames[row];
        if (!static_cast<QCheckBox*>(m_products->cellWidget(row, 2))->isChecked())
            m.excludedProducts.insert(name);
        const QString quality = static_cast<QComboBox*>(m_products->cellWidget(row, 3))->currentText();
        if (!quality.isEmpty())
            m.productQuality.insert(name, quality);
    }
    return m;
}

} // namespace tarvik
