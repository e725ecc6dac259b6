#include "reports/ui/lotmapdialog.h"

#include "common/ui/gridformat.h"
#include "help/ui/helpwindow.h"
#include "reports/lotplaces.h"
#include "reports/maplink.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

namespace tarvik {

namespace {

QTableView* grid(const QString& name, QStandardItemModel* model)
{
    auto* view = new QTableView;
    view->setObjectName(name);
    view->setModel(model);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->verticalHeader()->hide();
    view->horizontalHeader()->setStretchLastSection(true);
    return view;
}

QStandardItem* cell(const QString& text, bool number = false)
{
    auto* item = new QStandardItem(text);
    if (number)
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    return item;
}

} // namespace

QString mapHost(const Einstellungen& settings)
{
    const QString host = settings.text[MapHostSlot].trimmed();
    return host.isEmpty() ? QString::fromLatin1(DefaultMapHost) : host;
}

LotMapDialog::LotMapDialog(AppContext context, std::optional<qint32> currentHarvestId, QWidget* parent)
    : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("BF_Lose_Luftbild"));
    setWindowTitle(QStringLiteral("Los-Standorte (Luftbild)"));
    m_harvestModel = new QStandardItemModel(this);
    m_harvestModel->setHorizontalHeaderLabels({QStringLiteral("Hieb_Nr"), QStringLiteral("Jahr"), QStringLiteral("Waldname"), QStringLiteral("Waldort")});
    m_lotModel = new QStandardItemModel(this);
    m_lotModel->setHorizontalHeaderLabels({QStringLiteral("Los_Nr"), QStringLiteral("Los_Bezeichnung"), QStringLiteral("Lagerort"),
                                           QStringLiteral("GPS_N"), QStringLiteral("GPS_O"), QStringLiteral("Anfahrt")});
    m_harvests = grid(QStringLiteral("gridlihieb"), m_harvestModel);
    m_lots = grid(QStringLiteral("gridlilos"), m_lotModel);

    int currentRow = -1;
    for (const HarvestRow& h : harvestsForMap(context.db)) {
        QList<QStandardItem*> row{cell(QString::number(h.hiebNr), true), cell(h.jahr), cell(h.waldname), cell(h.waldort)};
        row.first()->setData(h.id, Qt::UserRole);
        if (currentHarvestId && *currentHarvestId == h.id)
            currentRow = m_harvestModel->rowCount();
        m_harvestModel->appendRow(row);
    }
    fitColumnsToContent(m_harvests);

    auto* ok = new QPushButton(QStringLiteral("&Luftbild anzeigen"));
    ok->setObjectName(QStringLiteral("ok"));
    ok->setDefault(true);
    auto* save = new QPushButton(QStringLiteral("Als &GeoJSON/KML speichern"));
    save->setObjectName(QStringLiteral("geodatei"));
    save->setToolTip(QStringLiteral("Die Lose des Hiebs mit Koordinaten als Dateien für Karten-Apps und GIS-Programme speichern"));
    auto* help = new QPushButton(QStringLiteral("&Hilfe"));
    help->setObjectName(QStringLiteral("hilfe"));
    auto* close = new QPushButton(QStringLiteral("&Beenden"));
    close->setObjectName(QStringLiteral("beenden"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(ok);
    buttons->addWidget(save);
    buttons->addStretch();
    buttons->addWidget(help);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Hiebe")));
    layout->addWidget(m_harvests, 2);
    layout->addWidget(new QLabel(QStringLiteral("Lose des gewählten Hiebs")));
    layout->addWidget(m_lots, 3);
    layout->addLayout(buttons);
    resize(820, 560);

    connect(m_harvests->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &LotMapDialog::showLotsOfCurrentHarvest);
    connect(ok, &QPushButton::clicked, this, &LotMapDialog::openMarkedLot);
    connect(m_lots, &QTableView::doubleClicked, this, &LotMapDialog::openMarkedLot);
    connect(save, &QPushButton::clicked, this, &LotMapDialog::exportLots);
    connect(help, &QPushButton::clicked, this, [this] { showHelp(this, m_context.prompter, QStringLiteral("BF_Lose_Luftbild")); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    if (currentRow >= 0)
        m_harvests->setCurrentIndex(m_harvestModel->index(currentRow, 0));
}

std::optional<qint32> LotMapDialog::currentHarvestId() const
{
    const QModelIndex current = m_harvests->currentIndex();
    if (!current.isValid())
        return std::nullopt;
    return m_harvestModel->item(current.row(), 0)->data(Qt::UserRole).toInt();
}

void LotMapDialog::showLotsOfCurrentHarvest()
{
    m_lotModel->removeRows(0, m_lotModel->rowCount());
    const auto id = currentHarvestId();
    if (!id)
        return;
    for (const LotPlace& lot : lotPlaces(m_context.db, *id))
        m_lotModel->appendRow({cell(QString::number(lot.losNr), true), cell(lot.bezeichnung), cell(lot.lagerort), cell(lot.gpsB, true),
                               cell(lot.gpsL, true), cell(lot.anfahrt)});
    fitColumnsToContent(m_lots);
    if (m_lotModel->rowCount() > 0)
        m_lots->setCurrentIndex(m_lotModel->index(0, 0));
}

bool LotMapDialog::openMarkedLot()
{
    const QModelIndex current = m_lots->currentIndex();
    if (!current.isValid()) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Datensatz, den Sie anzeigen möchten."));
        return false;
    }
    const MapLink link = mapLink(m_lotModel->item(current.row(), 3)->text(), m_lotModel->item(current.row(), 4)->text(), mapHost(m_context.settings));
    if (!link.ok) {
        m_context.prompter.inform(link.message);
        return false;
    }
    if (QDesktopServices::openUrl(link.url))
        return true;
    // No browser could be started: the address can still be pasted into one by hand.
    const QString address = link.url.toString(QUrl::FullyEncoded);
    if (m_context.prompter.askYesNo(QStringLiteral("Es konnte kein Browser gestartet werden, um das Luftbild zu zeigen. Die Adresse "
                                                   "lautet:\n\n%1\n\nSoll die Adresse in die Zwischenablage kopiert werden? Sie "
                                                   "können sie dann in die Adresszeile eines Browsers einfügen.")
                                        .arg(address)))
        QGuiApplication::clipboard()->setText(address);
    return false;
}

void LotMapDialog::exportLots()
{
    const auto id = currentHarvestId();
    if (!id) {
        m_context.prompter.inform(QStringLiteral("Bitte markieren Sie zuerst den Hieb, dessen Lose Sie speichern möchten."));
        return;
    }
    const QString hiebNr = m_harvestModel->item(m_harvests->currentIndex().row(), 0)->text();
    // The name is asked for only when some lot has coordinates to write.
    const GeoFilesResult result = writeLotPlaceFiles(m_context.db, *id, [this, &hiebNr] {
        QString base = m_context.prompter.chooseSaveFile(QStringLiteral("Lose als GeoJSON und KML speichern"),
                                                         QDir(m_context.dataFolder).filePath(QStringLiteral("Hieb_%1_Lose.geojson").arg(hiebNr)),
                                                         QStringLiteral("GeoJSON (*.geojson)"));
        for (const QString& suffix : {QStringLiteral(".geojson"), QStringLiteral(".kml")})
            if (base.endsWith(suffix, Qt::CaseInsensitive))
                base.chop(suffix.size());
        return base;
    });
    if (result.message.isEmpty())
        return;
    m_context.prompter.inform(result.message, result.ok ? Prompter::Icon::Information : Prompter::Icon::Warning);
}

} // namespace tarvik
