#include "parties/ui/owndatadialog.h"

#include "common/ui/guarded.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarvik {
namespace {

// The form's captions in the order of parties::ownDataFields().
constexpr const char* Captions[] = {"Name:",          "Straße:",      "Postleitzahl:", "Ort:",          "Land (z.B. DE):",
                                    "Ansprechpartner:", "Telefon:",   "E-Mail:",       "Steuernummer:", "USt-IdNr.:",
                                    "Lieferanten-Nr. beim Käufer:", "IBAN:", "BIC:",   "Bank:"};

} // namespace

OwnDataDialog::OwnDataDialog(const AppContext& context, QWidget* parent) : QDialog(parent), m_context(context)
{
    setObjectName(QStringLiteral("EF_Eigene_Angaben"));
    setWindowTitle(QStringLiteral("Eigene Angaben"));
    setModal(true);

    const QList<parties::Field>& fields = parties::ownDataFields();
    const parties::OwnData own = parties::loadOwnData(context.db);
    for (int i = 0; i < fields.size(); ++i) {
        auto* e = new QLineEdit(parties::fieldValue(own, QString::fromUtf8(fields[i].key)));
        e->setObjectName(QStringLiteral("t(%1)").arg(i));
        // Room for a whole name, street or IBAN without scrolling.
        e->setMinimumWidth(e->fontMetrics().horizontalAdvance(QLatin1Char('M')) * 22);
        m_fields << e;
    }
    m_regime = new QComboBox;
    m_regime->setObjectName(QStringLiteral("kom(0)"));
    for (parties::TaxRegime r : {parties::TaxRegime::Regular, parties::TaxRegime::Flat24, parties::TaxRegime::Small19})
        m_regime->addItem(parties::regimeCaption(r), int(r));
    m_regime->setCurrentIndex(m_regime->findData(int(own.regime)));

    auto group = [&](const QString& title, int from, int to) {
        auto* box = new QGroupBox(title);
        auto* form = new QFormLayout(box);
        for (int i = from; i < to; ++i)
            form->addRow(QString::fromUtf8(Captions[i]), m_fields[i]);
        return box;
    };
    auto* tax = group(QStringLiteral("Steuer"), 8, 11);
    static_cast<QFormLayout*>(tax->layout())->addRow(QStringLiteral("Besteuerung:"), m_regime);

    auto* save = new QPushButton(QStringLiteral("&Speichern"));
    save->setObjectName(QStringLiteral("ok"));
    save->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("&Abbrechen"));
    cancel->setObjectName(QStringLiteral("abbrechen"));
    cancel->setAutoDefault(false);
    connect(save, &QPushButton::clicked, this, &OwnDataDialog::onStore);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(save);
    buttons->addWidget(cancel);

    auto* columns = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    left->addWidget(group(QStringLiteral("Anschrift"), 0, 5));
    left->addWidget(group(QStringLiteral("Kontakt"), 5, 8));
    left->addStretch();
    auto* right = new QVBoxLayout;
    right->addWidget(tax);
    right->addWidget(group(QStringLiteral("Bankverbindung"), 11, 14));
    right->addStretch();
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addLayout(buttons);
}

parties::OwnData OwnDataDialog::typed() const
{
    parties::OwnData data;
    QString ignored;
    const QList<parties::Field>& fields = parties::ownDataFields();
    for (int i = 0; i < fields.size(); ++i)
        parties::setField(data, QString::fromUtf8(fields[i].key), m_fields[i]->text(), &ignored);
    data.regime = parties::TaxRegime(m_regime->currentData().toInt());
    return data;
}

void OwnDataDialog::onStore()
{
    if (runGuarded(m_context.prompter, [&] { return parties::storeOwnData(m_context, typed()); }))
        accept();
}

} // namespace tarvik
