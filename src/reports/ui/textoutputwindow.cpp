#include "reports/ui/textoutputwindow.h"

#include "common/ui/gridformat.h"

#include "common/numbers.h"
#include "common/textfile.h"
#include "reports/printer.h"

#include <QApplication>
#include <QDir>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

namespace tarvik {

QString TextOutputWindow::pdfPrinterEntry() { return QStringLiteral("PDF-Datei"); }

TextOutputWindow::TextOutputWindow(const AppContext& context, QWidget* parent)
    : QDialog(parent), m_context(context), m_reportPath(reportFilePath(context.dataFolder))
{
    setObjectName(QStringLiteral("AF_Textausgabe"));
    setWindowTitle(QStringLiteral("Listen-Ausgabe ") + QDir::toNativeSeparators(m_reportPath));
    setModal(true);
    build();
    load();
}

void TextOutputWindow::build()
{
    m_text = new QPlainTextEdit;
    m_text->setObjectName(QStringLiteral("t"));
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap); // a report line never wraps

    auto button = [this](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption);
        b->setObjectName(name);
        b->setAutoDefault(false);
        return b;
    };
    auto* sizeBox = new QGroupBox(QStringLiteral("Schriftgröße"));
    auto* sizeLayout = new QGridLayout(sizeBox);
    m_size = new QLineEdit;
    m_size->setObjectName(QStringLiteral("gr_e"));
    m_size->setMaxLength(2);
    showReadOnly(m_size);
    const std::tuple<const char*, const char*, int> steps[] = {
        {"plus1(0)", "Schriftgröße +1", 1}, {"plus1(1)", "Schriftgröße -1", -1},
        {"plus5(0)", "Schriftgröße +5", 5}, {"plus5(1)", "Schriftgröße -5", -5}};
    sizeLayout->addWidget(m_size, 0, 0, 1, 2);
    int index = 0;
    for (const auto& [name, caption, step] : steps) {
        QPushButton* b = button(QString::fromLatin1(name), QString::fromUtf8(caption));
        connect(b, &QPushButton::clicked, this, [this, step = step] { changeFontSize(step); });
        sizeLayout->addWidget(b, 1 + index / 2, index % 2);
        ++index;
    }

    auto* printBox = new QGroupBox(QStringLiteral("Drucken"));
    auto* printLayout = new QGridLayout(printBox);
    m_orientation = new QButtonGroup(this);
    auto* landscape = new QRadioButton(QStringLiteral("Querformat"));
    landscape->setObjectName(QStringLiteral("druckformat(0)"));
    auto* portrait = new QRadioButton(QStringLiteral("Hochformat"));
    portrait->setObjectName(QStringLiteral("druckformat(1)"));
    m_orientation->addButton(landscape, 0);
    m_orientation->addButton(portrait, 1);
    m_margin = new QLineEdit;
    m_margin->setObjectName(QStringLiteral("tz"));
    m_margin->setMaxLength(2);
    m_printers = new QComboBox;
    m_printers->setObjectName(QStringLiteral("komdrucker"));
    m_fonts = new QComboBox;
    m_fonts->setObjectName(QStringLiteral("kom"));
    m_bold = new QCheckBox(QStringLiteral("Fett"));
    m_bold->setObjectName(QStringLiteral("kon(0)"));
    m_italic = new QCheckBox(QStringLiteral("Kursiv"));
    m_italic->setObjectName(QStringLiteral("kon(1)"));
    printLayout->addWidget(landscape, 0, 0);
    printLayout->addWidget(portrait, 0, 1);
    printLayout->addWidget(new QLabel(QStringLiteral("Linker Rand =")), 1, 0);
    auto* marginRow = new QHBoxLayout;
    marginRow->addWidget(m_margin);
    marginRow->addWidget(new QLabel(QStringLiteral("Zeichen")));
    printLayout->addLayout(marginRow, 1, 1);
    printLayout->addWidget(new QLabel(QStringLiteral("Drucker:")), 2, 0);
    printLayout->addWidget(m_printers, 2, 1);
    printLayout->addWidget(new QLabel(QStringLiteral("Schriftart:")), 3, 0);
    printLayout->addWidget(m_fonts, 3, 1);
    printLayout->addWidget(m_bold, 4, 0);
    printLayout->addWidget(m_italic, 4, 1);

    QPushButton* printText = button(QStringLiteral("drucken"), QStringLiteral("&Text drucken"));
    QPushButton* printFile = button(QStringLiteral("dateidrucken"), QStringLiteral("&Datei drucken"));
    QPushButton* save = button(QStringLiteral("comspeichern"), QStringLiteral("&Speichern"));
    QPushButton* editor = button(QStringLiteral("comeditor"), QStringLiteral("&Editor"));
    QPushButton* help = button(QStringLiteral("hilfe"), QStringLiteral("&Hilfe"));
    help->setEnabled(false); // the help filter enables and wires it when the window shows
    QPushButton* close = button(QStringLiteral("abbv"), QStringLiteral("Schl&ießen"));

    auto* side = new QVBoxLayout;
    side->addWidget(sizeBox);
    side->addWidget(printBox);
    for (QPushButton* b : {printText, printFile, save, editor, help})
        side->addWidget(b);
    side->addWidget(new QLabel(QStringLiteral("# = Seitenumbruch")));
    m_printStatus = new QLabel;
    m_printStatus->setObjectName(QStringLiteral("druckstatus"));
    m_printStatus->setWordWrap(true);
    side->addWidget(m_printStatus);
    side->addStretch();
    side->addWidget(close);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_text, 1);
    layout->addLayout(side);
    resize(1100, 760);

    connect(printText, &QPushButton::clicked, this, &TextOutputWindow::onPrintText);
    connect(printFile, &QPushButton::clicked, this, &TextOutputWindow::onPrintFile);
    connect(save, &QPushButton::clicked, this, &TextOutputWindow::onSave);
    connect(editor, &QPushButton::clicked, this, &TextOutputWindow::onEditor);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
}

void TextOutputWindow::load()
{
    for (const QString& family : QFontDatabase::families())
        if (isFixedPitchName(family))
            m_fonts->addItem(family);
    // Courier New stands first; where it is missing Liberation Mono, with its metrics, takes its place.
    const QString preferred = resolveFixedFont(QStringLiteral("Courier New"));
    if (m_fonts->findText(preferred) < 0)
        m_fonts->insertItem(0, preferred);
    m_fonts->setCurrentIndex(m_fonts->findText(preferred));

    m_printers->addItems(installedPrinters());
    m_printers->addItem(pdfPrinterEntry());
    const int current = m_printers->findText(defaultPrinter());
    m_printers->setCurrentIndex(current >= 0 ? current : m_printers->count() - 1);

    const PrintSettings s = PrintSettings::from(m_context.settings);
    m_margin->setText(QString::number(s.marginChars));
    m_size->setText(QString::number(s.fontSize));
    m_bold->setChecked(s.bold);
    m_italic->setChecked(s.italic);
    m_orientation->button(s.landscape ? 0 : 1)->setChecked(true);

    const QString font = m_fonts->currentText();
    if (!font.startsWith(QLatin1String("Courier")) && font != u"Liberation Mono")
        m_context.prompter.inform(QStringLiteral("Hinweis:\nUm die Tabellenausgabe im TFS-Editor richtig darstellen zu können, sollten Sie "
                                                 "eine nicht proportionale Schrift, z.B. Courier New oder eine andere Courier-Schrift, "
                                                 "auswählten!"));
    applyScreenFont();

    const ReportDisplay display = loadForDisplay(m_reportPath);
    if (!display.exists) {
        m_context.prompter.inform(missingReportMessage(m_reportPath));
        return;
    }
    m_text->setPlainText(display.text);
    if (display.truncated)
        m_context.prompter.inform(truncatedReportMessage(), Prompter::Icon::Warning);
}

void TextOutputWindow::changeFontSize(int step)
{
    m_size->setText(QString::number(stepFontSize(m_size->text().toInt(), step)));
    applyScreenFont();
}

void TextOutputWindow::applyScreenFont()
{
    QFont font(resolveFixedFont(m_fonts->currentText()));
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSize(std::max(4, m_size->text().toInt()));
    m_text->setFont(font);
}

PrintSettings TextOutputWindow::settings() const
{
    PrintSettings s;
    s.bold = m_bold->isChecked();
    s.italic = m_italic->isChecked();
    s.fontSize = std::max(4, m_size->text().toInt());
    s.marginChars = std::clamp(toLong(readNumber(m_margin->text())), 0, 20);
    s.landscape = m_orientation->checkedId() == 0;
    return s;
}

PrintJob TextOutputWindow::job()
{
    PrintJob j;
    j.fontFamily = m_fonts->currentText().trimmed();
    j.settings = settings();
    j.topMarginMm = std::clamp<int>(m_context.settings.printTopMarginMm(), 0, 80);
    if (m_printers->currentText() == pdfPrinterEntry())
        j.pdfPath = m_context.prompter.chooseSaveFile(QStringLiteral("Als PDF-Datei drucken"),
                                                      QDir(m_context.dataFolder).filePath(QStringLiteral("Daten.pdf")),
                                                      QStringLiteral("PDF-Datei (*.pdf)"));
    else
        j.printerName = m_printers->currentText();
    return j;
}

void TextOutputWindow::print(const QStringList& lines)
{
    // A PDF's name is asked for only when there is something to print.
    if (std::all_of(lines.begin(), lines.end(), [](const QString& line) { return line.trimmed().isEmpty(); })) {
        m_context.prompter.inform(QStringLiteral("Es gibt nichts zu drucken: Der Text ist leer."));
        return;
    }
    const PrintJob j = job();
    if (j.printerName.isEmpty() && j.pdfPath.isEmpty())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const PrintResult result = printLines(lines, j);
    QApplication::restoreOverrideCursor();
    m_printStatus->setText(result.statusText());
    if (!result.ok)
        m_context.prompter.inform(result.message, Prompter::Icon::Warning);
}

void TextOutputWindow::onPrintText()
{
    // What the box holds, edits included, goes through the print file as a report does.
    const QString scratch = QDir(m_context.dataFolder).filePath(QStringLiteral("DRUCKAUF.TXT"));
    const TextFileResult written = writeTextFileRaw(scratch, m_text->toPlainText());
    if (!written.ok) {
        m_context.prompter.inform(written.error, Prompter::Icon::Warning);
        return;
    }
    print(readTextFile(scratch).lines);
}

void TextOutputWindow::onPrintFile()
{
    const TextFileResult file = readTextFile(m_reportPath);
    if (!file.ok) {
        m_context.prompter.inform(missingReportMessage(m_reportPath));
        return;
    }
    print(file.lines);
}

void TextOutputWindow::onSave()
{
    const QFileInfo report(m_reportPath);
    if (!report.isFile() || report.size() == 0) {
        m_context.prompter.inform(missingReportMessage(m_reportPath));
        return;
    }
    const QString target = m_context.prompter.chooseSaveFile(QStringLiteral("Liste speichern"), m_context.dataFolder,
                                                             QStringLiteral("Textdatei (*.TXT)"));
    if (target.isEmpty())
        return;
    QFile::remove(target);
    if (!QFile::copy(m_reportPath, target))
        m_context.prompter.inform(QStringLiteral("Die Datei \"%1\" kann nicht geschrieben werden.").arg(QDir::toNativeSeparators(target)),
                                  Prompter::Icon::Warning);
}

void TextOutputWindow::onEditor() { QDesktopServices::openUrl(QUrl::fromLocalFile(m_reportPath)); }

void TextOutputWindow::done(int result)
{
    settings().storeIn(m_context.settings);
    QString error;
    if (!EinstellungenSpeichern(m_context.settings, QDir(m_context.dataFolder).filePath(QLatin1String(SettingsFileName)), &error))
        m_context.prompter.inform(error, Prompter::Icon::Warning);
    QDialog::done(result);
}

} // namespace tarvik
