#include "invoices/ui/invoicedialog.h"

#include "common/ui/gridformat.h"

#include "common/numbers.h"
#include "common/sqldate.h"
#include "common/textfile.h"
#include "common/ui/guarded.h"
#include "invoices/einvoice/pdfreader.h"
#include "invoices/einvoice/reader.h"
#include "invoices/einvoicefile.h"
#include "reports/reportfile.h"
#include "reports/ui/textoutputwindow.h"
#include "store/sql.h"

#include <QComboBox>
#include <QDir>
#include <QFontDatabase>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tarvik {
namespace {

QLineEdit* field(const QString& name, int maxLength)
{
    auto* e = new QLineEdit;
    e->setObjectName(name);
    e->setMaxLength(maxLength);
    return e;
}

QString percentField(float value) { return formatDecimal(value, 2); }

} // namespace

InvoiceDialog::InvoiceDialog(const AppContext& context, Mode mode, QList<qint32> hubInvoices, int hubRow, QWidget* parent)
    : QDialog(parent), m_context(context), m_mode(mode), m_hubInvoices(std::move(hubInvoices)), m_hubRow(hubRow)
{
    setObjectName(QStringLiteral("EF_Eingabe_Rechnungen"));
    setWindowTitle(QStringLiteral("Rechnungen eingeben/ändern"));
    setModal(true);
    build();
    fillLists();
    fillLots();
    applyRemembered();
    if (m_mode == Mode::Neu)
        if (const auto sender = ownSenderLines(m_context.db))
            for (int i = 0; i < 6; ++i)
                m_t[size_t(4 + i)]->setText(sender->at(size_t(i)));
    updateCaptions();
    m_date->setText(formatGermanDate(m_context.clock.today()));
    if (m_mode == Mode::Neu) {
        // Stepping walks the hub's stored invoices; a new one is not among them. Only a stored
        // invoice becomes an e-invoice.
        m_ok[1]->setEnabled(false);
        m_ok[2]->setEnabled(false);
        m_writeEInvoice->setEnabled(false);
        m_tz[0]->setText(QString::number(proposedInvoiceNumber(m_context.db, m_context.clock.today())));
        updatePreview();
    } else {
        // A stored invoice is shown, not changed.
        for (QLineEdit* e : m_t)
            if (e)
                showReadOnly(e);
        for (QLineEdit* e : m_tz)
            showReadOnly(e);
        showReadOnly(m_date);
        showReadOnly(m_delivery);
        showReadOnly(m_discountDays);
        m_buyer->setEnabled(false);
        m_lots->setEnabled(false);
        m_ok[0]->setEnabled(false);
        const bool canStep = !m_hubInvoices.isEmpty();
        m_ok[1]->setEnabled(canStep);
        m_ok[2]->setEnabled(canStep);
        if (m_hubRow < 0 || m_hubRow >= m_hubInvoices.size())
            m_hubRow = canStep ? 0 : -1;
        if (m_hubRow >= 0)
            if (const auto invoice = loadInvoiceById(m_context.db, m_hubInvoices.at(m_hubRow)))
                showInvoice(*invoice);
    }
}

void InvoiceDialog::build()
{
    m_buyer = new QComboBox;
    m_buyer->setObjectName(QStringLiteral("kom(0)"));
    m_buyer->setEditable(true);
    m_buyer->setInsertPolicy(QComboBox::NoInsert);
    m_buyer->lineEdit()->setMaxLength(50);
    m_t[0] = field(QStringLiteral("t(0)"), 30);
    m_t[1] = field(QStringLiteral("t(1)"), 30);
    m_t[2] = field(QStringLiteral("t(2)"), 30);
    m_t[12] = field(QStringLiteral("t(12)"), 30);
    for (int i = 4; i <= 11; ++i)
        m_t[size_t(i)] = field(QStringLiteral("t(%1)").arg(i), 255);
    m_tz[0] = field(QStringLiteral("tz(0)"), 10);
    // The number is stored as a whole number: what is typed is what is printed and stored.
    m_tz[0]->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,10}")), m_tz[0]));
    for (int i = 1; i <= 3; ++i)
        m_tz[size_t(i)] = field(QStringLiteral("tz(%1)").arg(i), 10);
    m_date = field(QStringLiteral("tdat(0)"), 10);
    m_date->setPlaceholderText(QStringLiteral("TT.MM.JJJJ"));
    m_delivery = field(QStringLiteral("tdat(1)"), 10);
    m_delivery->setPlaceholderText(QStringLiteral("TT.MM.JJJJ"));
    m_delivery->setToolTip(QStringLiteral("Leer: wie das Rechnungsdatum"));
    m_discountDays = field(QStringLiteral("tz(4)"), 3);
    m_discountDays->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,3}")), m_discountDays));
    // Numbers and the date need a few characters, not the column's whole width.
    for (QLineEdit* e : {m_tz[0], m_tz[1], m_tz[2], m_tz[3], m_date, m_delivery, m_discountDays})
        e->setMaximumWidth(e->fontMetrics().averageCharWidth() * (e->maxLength() + 4));
    for (int i = 0; i < 3; ++i) {
        m_captions[size_t(i)] = new QPushButton;
        m_captions[size_t(i)]->setObjectName(QStringLiteral("roCommand1(%1)").arg(i));
        m_captions[size_t(i)]->setAutoDefault(false);
        m_captions[size_t(i)]->setToolTip(QStringLiteral("Bezeichnung ändern"));
        // A caption is changed by a click; Tab goes from field to field.
        m_captions[size_t(i)]->setFocusPolicy(Qt::ClickFocus);
        connect(m_captions[size_t(i)], &QPushButton::clicked, this, [this, i] { onCaption(i); });
    }

    auto* buyerBox = new QGroupBox(QStringLiteral("Rechnungsempfänger"));
    auto* buyerForm = new QFormLayout(buyerBox);
    buyerForm->addRow(QStringLiteral("Abnehmer:"), m_buyer);
    buyerForm->addRow(QStringLiteral("Name:"), m_t[0]);
    buyerForm->addRow(QStringLiteral("Straße:"), m_t[1]);
    buyerForm->addRow(QStringLiteral("Wohnort:"), m_t[2]);
    buyerForm->addRow(m_captions[0], m_t[12]);
    buyerForm->addRow(m_captions[1], m_date);
    buyerForm->addRow(QStringLiteral("Leistungsdatum:"), m_delivery);
    buyerForm->addRow(m_captions[2], m_tz[0]);

    auto* percentBox = new QGroupBox(QStringLiteral("Abgaben und Skonto"));
    auto* percentForm = new QFormLayout(percentBox);
    percentForm->addRow(QStringLiteral("CMA-Abgabe in %:"), m_tz[1]);
    percentForm->addRow(QStringLiteral("Umsatzsteuer in %:"), m_tz[2]);
    percentForm->addRow(QStringLiteral("Skonto in %:"), m_tz[3]);

    auto* senderBox = new QGroupBox(QStringLiteral("Ihre Anschrift"));
    auto* senderLayout = new QVBoxLayout(senderBox);
    for (int i = 4; i <= 9; ++i)
        senderLayout->addWidget(m_t[size_t(i)]);

    auto framed = [](const QString& caption, QWidget* w) {
        auto* box = new QGroupBox(caption);
        auto* l = new QVBoxLayout(box);
        l->addWidget(w);
        return box;
    };

    auto* leftColumn = new QVBoxLayout;
    leftColumn->addWidget(buyerBox);
    leftColumn->addWidget(percentBox);
    leftColumn->addWidget(senderBox);
    auto* discountBox = framed(QStringLiteral("Hinweistext bei Skonto-Berechnung (z.B. 2% Skonto bis 21 Tage)"), m_t[10]);
    auto* daysRow = new QHBoxLayout;
    daysRow->addWidget(new QLabel(QStringLiteral("Skonto gilt Tage:")));
    daysRow->addWidget(m_discountDays);
    daysRow->addStretch();
    static_cast<QVBoxLayout*>(discountBox->layout())->addLayout(daysRow);
    leftColumn->addWidget(discountBox);
    leftColumn->addWidget(framed(QStringLiteral("Zusatzinformationen (Bankverbindung, Zahlungshinweise, UID-Nummer...)"), m_t[11]));
    leftColumn->addStretch();

    m_lots = new QTableWidget;
    m_lots->setObjectName(QStringLiteral("li"));
    m_lots->setColumnCount(8);
    m_lots->setHorizontalHeaderLabels({QStringLiteral("Hieb_Nr"), QStringLiteral("Los_Nr"), QStringLiteral("ReNr"),
                                       QStringLiteral("Los_Bezeichnung"), QStringLiteral("Sortierung"), QStringLiteral("Abgerechnet"),
                                       QStringLiteral("Abnehmer"), QStringLiteral("Preis_Art")});
    m_lots->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_lots->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_lots->setSelectionMode(QAbstractItemView::MultiSelection);
    m_lots->verticalHeader()->setVisible(false);
    m_lots->verticalHeader()->setDefaultSectionSize(m_lots->fontMetrics().height() + 4);
    m_lots->horizontalHeader()->setStretchLastSection(false); // the last column is a figure: it stays at the right of its text

    m_preview = new QPlainTextEdit;
    m_preview->setObjectName(QStringLiteral("t(3)"));
    showReadOnly(m_preview);
    m_preview->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_preview->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_amount = new QLabel;
    m_amount->setObjectName(QStringLiteral("bezbetrag"));
    QFont bold = m_amount->font();
    bold.setBold(true);
    m_amount->setFont(bold);

    auto* rightColumn = new QVBoxLayout;
    rightColumn->addWidget(new QLabel(QStringLiteral("Folgende Lose in der Rechnung berücksichtigen")));
    rightColumn->addWidget(m_lots, 2);
    rightColumn->addWidget(new QLabel(QStringLiteral("Rechnungstext:")));
    rightColumn->addWidget(m_preview, 3);
    rightColumn->addWidget(m_amount);

    m_numbers = new QComboBox;
    m_numbers->setObjectName(QStringLiteral("kom(1)"));
    m_numbers->setMinimumContentsLength(10);
    auto button = [this](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    m_ok[0] = button(QStringLiteral("ok(0)"), QStringLiteral("Rechnung &speichern"));
    m_ok[1] = button(QStringLiteral("ok(1)"), QStringLiteral("<< &Vorherige"));
    m_ok[2] = button(QStringLiteral("ok(2)"), QStringLiteral("&Nächste >>"));
    QPushButton* print = button(QStringLiteral("comdrucken"), QStringLiteral("&Drucken"));
    m_writeEInvoice = button(QStringLiteral("comerechnung"), QStringLiteral("&E-Rechnung speichern"));
    m_writeEInvoice->setToolTip(QStringLiteral("Die angezeigte gespeicherte Rechnung als XRechnung-Datei schreiben"));
    QPushButton* readEInvoice = button(QStringLiteral("comerechnunglesen"), QStringLiteral("E-Rechnung an&zeigen"));
    readEInvoice->setToolTip(QStringLiteral("Eine E-Rechnung (XML oder PDF mit eingebetteter Rechnung) lesbar anzeigen"));
    QPushButton* cancel = button(QStringLiteral("abbrechen"), QStringLiteral("&Abbrechen"));
    QPushButton* help = button(QStringLiteral("hilfe"), QStringLiteral("&Hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(new QLabel(QStringLiteral("Gespeicherte Rechnung:")));
    buttons->addWidget(m_numbers);
    buttons->addWidget(m_ok[1]);
    buttons->addWidget(m_ok[2]);
    buttons->addStretch();
    buttons->addWidget(m_ok[0]);
    buttons->addWidget(m_writeEInvoice);
    buttons->addWidget(readEInvoice);
    buttons->addWidget(print);
    buttons->addWidget(help);
    buttons->addWidget(cancel);

    auto* columns = new QHBoxLayout;
    columns->addLayout(leftColumn, 2);
    columns->addLayout(rightColumn, 3);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(buttons);
    resize(1280, 700);

    for (QLineEdit* e : m_t)
        if (e)
            connect(e, &QLineEdit::textEdited, this, &InvoiceDialog::updatePreview);
    for (QLineEdit* e : m_tz)
        connect(e, &QLineEdit::textEdited, this, &InvoiceDialog::updatePreview);
    connect(m_date, &QLineEdit::textEdited, this, &InvoiceDialog::updatePreview);
    connect(m_delivery, &QLineEdit::textEdited, this, &InvoiceDialog::updatePreview);
    connect(m_discountDays, &QLineEdit::textEdited, this, &InvoiceDialog::updatePreview);
    connect(m_buyer, &QComboBox::activated, this, &InvoiceDialog::onBuyerChosen);
    connect(m_numbers, &QComboBox::activated, this, &InvoiceDialog::onNumberChosen);
    connect(m_lots->selectionModel(), &QItemSelectionModel::selectionChanged, this, &InvoiceDialog::updatePreview);
    connect(m_ok[0], &QPushButton::clicked, this, &InvoiceDialog::onStore);
    connect(m_ok[1], &QPushButton::clicked, this, [this] { step(-1); });
    connect(m_ok[2], &QPushButton::clicked, this, [this] { step(1); });
    connect(print, &QPushButton::clicked, this, &InvoiceDialog::onPrint);
    connect(m_writeEInvoice, &QPushButton::clicked, this, &InvoiceDialog::onWriteEInvoice);
    connect(readEInvoice, &QPushButton::clicked, this, &InvoiceDialog::onReadEInvoice);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void InvoiceDialog::fillLists()
{
    const QString typed = m_buyer->currentText();
    m_buyer->clear();
    m_buyer->addItems(invoiceBuyers(m_context.db));
    m_buyer->setEditText(typed);
    m_numbers->clear();
    for (qint32 n : invoiceNumbers(m_context.db))
        m_numbers->addItem(QString::number(n), n);
    m_numbers->setCurrentIndex(-1);
}

void InvoiceDialog::fillLots()
{
    const QSignalBlocker quiet(m_lots->selectionModel());
    m_lots->clearSelection();
    const QList<OpenLot> lots = openLots(m_context.db);
    m_lots->setRowCount(int(lots.size()));
    for (int row = 0; row < lots.size(); ++row) {
        const OpenLot& l = lots.at(row);
        const QString cells[] = {l.hiebNr, l.losNr, l.reNr, l.designation, l.sorting, l.settled, l.buyer, l.priceKind};
        for (int c = 0; c < 8; ++c)
            m_lots->setItem(row, c, new QTableWidgetItem(cells[c]));
        m_lots->item(row, 0)->setData(Qt::UserRole, l.lotId);
    }
    formatTableItems(m_lots);
    fitColumnsToContent(m_lots);
}

void InvoiceDialog::applyRemembered()
{
    InvoiceInput remembered;
    if (!loadRemembered(m_context.dataFolder, remembered))
        return;
    m_tz[1]->setText(remembered.levy);
    m_tz[2]->setText(remembered.vat);
    m_tz[3]->setText(remembered.discount);
    for (int i = 0; i < 6; ++i)
        m_t[size_t(4 + i)]->setText(remembered.sender[size_t(i)]);
    m_t[10]->setText(remembered.discountNote);
    m_t[11]->setText(remembered.closing);
}

InvoiceInput InvoiceDialog::input() const
{
    InvoiceInput in;
    in.buyer = m_buyer->currentText();
    in.name = m_t[0]->text();
    in.street = m_t[1]->text();
    in.town = m_t[2]->text();
    in.customerInfo = m_t[12]->text();
    in.number = m_tz[0]->text();
    in.levy = m_tz[1]->text();
    in.vat = m_tz[2]->text();
    in.discount = m_tz[3]->text();
    in.date = m_date->text();
    in.deliveryDate = m_delivery->text();
    in.discountDays = m_discountDays->text();
    for (int i = 0; i < 6; ++i)
        in.sender[size_t(i)] = m_t[size_t(4 + i)]->text();
    in.discountNote = m_t[10]->text();
    in.closing = m_t[11]->text();
    // In the order of the lot list, whatever order they were marked in.
    for (int row = 0; row < m_lots->rowCount(); ++row)
        if (m_lots->selectionModel()->isRowSelected(row, QModelIndex()))
            in.lotIds << m_lots->item(row, 0)->data(Qt::UserRole).toInt();
    return in;
}

void InvoiceDialog::updatePreview()
{
    if (m_mode != Mode::Neu)
        return;
    if (m_showingStored) {
        // The stored invoice on show gives way to the next one, under the next free number.
        m_showingStored = false;
        m_writeEInvoice->setEnabled(false);
        if (m_tz[0]->text() == m_numbers->currentText())
            m_tz[0]->setText(QString::number(proposedInvoiceNumber(m_context.db, m_context.clock.today())));
    }
    runGuarded(m_context.prompter, [&] {
        const InvoicePreview preview = invoicePreview(m_context.db, input(), InvoiceCaptions::from(m_context.settings));
        m_preview->setPlainText(preview.text);
        m_amount->setText(amountCaption(preview.amount.total));
    });
}

void InvoiceDialog::onBuyerChosen()
{
    if (m_mode != Mode::Neu)
        return;
    InvoiceInput details;
    if (!applyBuyerDetails(m_context.db, m_buyer->currentText(), details))
        return;
    m_t[0]->setText(details.name);
    m_t[1]->setText(details.street);
    m_t[2]->setText(details.town);
    m_t[12]->setText(details.customerInfo);
    m_tz[1]->setText(details.levy);
    m_tz[2]->setText(details.vat);
    m_tz[3]->setText(details.discount);
    m_discountDays->setText(details.discountDays);
    updatePreview();
}

void InvoiceDialog::onNumberChosen(int index)
{
    if (index < 0)
        return;
    if (const auto invoice = loadInvoice(m_context.db, m_numbers->itemData(index).toInt()))
        showInvoice(*invoice);
}

void InvoiceDialog::showInvoice(const StoredInvoice& invoice)
{
    m_showingStored = true;
    m_shownNumber = invoice.number;
    m_writeEInvoice->setEnabled(true);
    m_buyer->setEditText(invoice.buyer);
    m_t[0]->setText(invoice.name);
    m_t[1]->setText(invoice.street);
    m_t[2]->setText(invoice.town);
    m_t[12]->setText(invoice.customerInfo);
    m_tz[0]->setText(QString::number(invoice.number));
    m_tz[1]->setText(percentField(invoice.levy));
    m_tz[2]->setText(percentField(invoice.vat));
    m_tz[3]->setText(percentField(invoice.discount));
    m_date->setText(invoice.date);
    m_delivery->setText(invoice.deliveryDate);
    m_discountDays->setText(invoice.discountDays);
    m_preview->setPlainText(invoiceLines(invoice.text).join(u'\n'));
    m_amount->setText(amountCaption(invoice.amount));
    m_numbers->setCurrentIndex(m_numbers->findData(invoice.number));
}

void InvoiceDialog::step(int direction)
{
    if (m_mode != Mode::Aendern || m_hubInvoices.isEmpty())
        return;
    const int count = int(m_hubInvoices.size());
    m_hubRow = ((m_hubRow < 0 ? 0 : m_hubRow + direction) % count + count) % count; // wraps at both ends
    if (const auto invoice = loadInvoiceById(m_context.db, m_hubInvoices.at(m_hubRow)))
        showInvoice(*invoice);
}

void InvoiceDialog::onStore()
{
    if (m_mode != Mode::Neu)
        return;
    const std::optional<qint32> number = runGuarded(m_context.prompter, [&] { return storeInvoice(m_context, input()); });
    if (!number)
        return;
    m_stored = true;
    fillLists();
    fillLots();
    // What was stored stays on show, so "Drucken" prints the invoice as it is kept.
    if (const auto invoice = loadInvoice(m_context.db, *number))
        showInvoice(*invoice);
    m_context.prompter.inform(QStringLiteral("Die Rechnung %1 ist gespeichert.").arg(*number));
}

void InvoiceDialog::onPrint()
{
    const QStringList lines = invoiceLines(m_preview->toPlainText());
    if (lines.isEmpty()) {
        m_context.prompter.inform(QStringLiteral("Die Liste kann nicht erstellt werden, weil noch kein Los für die Rechnung ausgewählt ist."));
        return;
    }
    const TextFileResult written = writeTextFile(reportFilePath(m_context.dataFolder), lines);
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    TextOutputWindow window(m_context, this);
    window.exec();
}

void InvoiceDialog::onCaption(int index)
{
    const QString caption = m_captions[size_t(index)]->text();
    const auto chosen = m_context.prompter.askText(QStringLiteral("Bitte geben Sie eine neue Bezeichnung für ") + caption + QStringLiteral(" ein."), caption);
    if (!chosen || chosen->trimmed().isEmpty())
        return;
    m_context.settings.text[size_t(FirstCaptionSlot + index)] = chosen->trimmed();
    updateCaptions();
    if (!m_showingStored)
        updatePreview();
}

void InvoiceDialog::updateCaptions()
{
    const InvoiceCaptions c = InvoiceCaptions::from(m_context.settings);
    m_captions[0]->setText(c.customer);
    m_captions[1]->setText(c.date);
    m_captions[2]->setText(c.number);
}

void InvoiceDialog::onWriteEInvoice()
{
    if (!m_showingStored || m_shownNumber <= 0)
        return;
    const QString path = m_context.prompter.chooseSaveFile(QStringLiteral("E-Rechnung speichern"),
                                                           eInvoiceProposal(m_context.dataFolder, m_shownNumber),
                                                           QStringLiteral("XRechnung (*.xml)"));
    if (path.isEmpty())
        return;
    if (runGuarded(m_context.prompter, [&] { return writeEInvoice(m_context, m_shownNumber, path, einvoice::Profile::XRechnung); }))
        m_context.prompter.inform(QStringLiteral("Die E-Rechnung %1 ist gespeichert:\n%2").arg(m_shownNumber).arg(QDir::toNativeSeparators(path)));
}

void InvoiceDialog::onReadEInvoice()
{
    const QString path = m_context.prompter.chooseOpenFile(QStringLiteral("E-Rechnung anzeigen"), m_context.dataFolder,
                                                           QStringLiteral("E-Rechnungen (*.xml *.pdf);;Alle Dateien (*)"));
    if (path.isEmpty())
        return;
    const einvoice::ReadResult read = einvoice::readInvoiceFile(path);
    if (!read.invoice) {
        m_context.prompter.inform(read.error, Prompter::Icon::Warning);
        return;
    }
    const TextFileResult written = writeTextFile(reportFilePath(m_context.dataFolder), einvoice::readableText(*read.invoice));
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    TextOutputWindow window(m_context, this);
    window.exec();
}

} // namespace tarvik
