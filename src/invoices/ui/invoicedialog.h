#pragma once
// EF_Eingabe_Rechnungen: an invoice to one buyer for lots without an invoice, with its preview,
// stored on ok(0) in mode "Neu"; in mode "Ändern" the hub's invoices are shown one by one.
#include "invoices/invoice.h"

#include <QDialog>
#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;

namespace tarvik {

class InvoiceDialog : public QDialog {
    Q_OBJECT
public:
    enum class Mode { Neu, Aendern };

    // hubInvoices: the Rechnungen.ID of each row of the hub's invoice list, hubRow its current
    // row; ok(1) and ok(2) step through them in mode "Ändern".
    InvoiceDialog(const AppContext& context, Mode mode, QList<qint32> hubInvoices = {}, int hubRow = -1,
                  QWidget* parent = nullptr);

    // The hub's row that was shown last, for the hub to make it its current row.
    int hubRow() const { return m_hubRow; }
    // True once an invoice was stored, so the opener refreshes its lists.
    bool stored() const { return m_stored; }

private:
    void build();
    void fillLists();
    void fillLots();
    void applyRemembered();
    InvoiceInput input() const;
    void updatePreview();
    void onBuyerChosen();
    void onNumberChosen(int index);
    void showInvoice(const StoredInvoice& invoice);
    void step(int direction);
    void onStore();
    void onPrint();
    void onWriteEInvoice();
    void onReadEInvoice();
    void onCaption(int index);
    void updateCaptions();

    AppContext m_context;
    Mode m_mode;
    QList<qint32> m_hubInvoices;
    int m_hubRow;
    bool m_stored = false;
    bool m_showingStored = false; // the preview holds a stored invoice's text
    qint32 m_shownNumber = 0;     // the number of that stored invoice
    QPushButton* m_writeEInvoice = nullptr; // comerechnung
    QComboBox* m_buyer = nullptr;      // kom(0)
    QComboBox* m_numbers = nullptr;    // kom(1)
    std::array<QLineEdit*, 13> m_t{};  // t(0) ... t(12); t(3) is the preview
    std::array<QLineEdit*, 4> m_tz{};  // tz(0) number, tz(1) ... tz(3) per cent
    QLineEdit* m_date = nullptr;       // tdat(0)
    QLineEdit* m_delivery = nullptr;   // tdat(1), date of supply
    QLineEdit* m_discountDays = nullptr; // tz(4), days of the cash discount
    QPlainTextEdit* m_preview = nullptr; // t(3)
    QLabel* m_amount = nullptr;        // bezbetrag
    QTableWidget* m_lots = nullptr;    // li
    std::array<QPushButton*, 3> m_ok{};
    std::array<QPushButton*, 3> m_captions{}; // roCommand1(0) ... (2)
};

} // namespace tarvik
