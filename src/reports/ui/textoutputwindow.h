#pragma once
// AF_Textausgabe: shows the report file, prints it, saves a copy, hands it to the editor.
#include "reports/print.h"
#include "store/context.h"

#include <QDialog>

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace tarvik {

class TextOutputWindow : public QDialog {
    Q_OBJECT
public:
    TextOutputWindow(const AppContext& context, QWidget* parent = nullptr);

    // Printing into a PDF file is offered beside the installed printers.
    static QString pdfPrinterEntry();

protected:
    void done(int result) override;

private:
    void build();
    void load();
    void changeFontSize(int step);
    void applyScreenFont();
    PrintJob job();
    void print(const QStringList& lines);
    void onPrintText();
    void onPrintFile();
    void onSave();
    void onEditor();
    PrintSettings settings() const;

    AppContext m_context;
    QString m_reportPath;
    QPlainTextEdit* m_text = nullptr;  // t
    QLineEdit* m_size = nullptr;       // gr_e
    QLineEdit* m_margin = nullptr;     // tz
    QComboBox* m_printers = nullptr;   // komdrucker
    QComboBox* m_fonts = nullptr;      // kom
    QLabel* m_printStatus = nullptr;   // says when a printout needed a smaller font
    QCheckBox* m_bold = nullptr;       // kon(0)
    QCheckBox* m_italic = nullptr;     // kon(1)
    QButtonGroup* m_orientation = nullptr; // druckformat(0) landscape, (1) portrait
};

} // namespace tarvik
