// The own-data window: what is typed is checked, refused with the reasons and kept in the
// fields, stored when right, and shown again at the next opening.
#include "parties/ui/owndatadialog.h"
#include "support/entryfixture.h"
#include "support/tempdatafolder.h"
#include "support/widgets.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

using namespace tarvik;
using test::child;

class TestOwnDataDialog : public QObject, protected test::EntryFixture {
    Q_OBJECT

private slots:
    void typedCheckedStoredAndShownAgain()
    {
        resetDatabase(std::nullopt);

        OwnDataDialog d(context());
        d.show();
        QCOMPARE(d.objectName(), QStringLiteral("EF_Eigene_Angaben"));
        // Every field of the own data has its own line in the window.
        const QList<parties::Field>& fields = parties::ownDataFields();
        QCOMPARE(d.findChildren<QLineEdit*>(QRegularExpression(QStringLiteral("^t\\(\\d+\\)$"))).size(), fields.size());
        auto field = [&](const char* key) {
            for (int i = 0; i < fields.size(); ++i)
                if (qstrcmp(fields[i].key, key) == 0)
                    return child<QLineEdit>(d, qPrintable(QStringLiteral("t(%1)").arg(i)));
            return static_cast<QLineEdit*>(nullptr);
        };
        test::typeInto(field("name"), QStringLiteral("Forst O'Neill"));
        test::typeInto(field("plz"), QStringLiteral("7833"));
        test::typeInto(field("iban"), QStringLiteral("DE89 3704 0044 0532 0130 00"));
        auto* regime = child<QComboBox>(d, "kom(0)");
        regime->setCurrentIndex(regime->findData(int(parties::TaxRegime::Flat24)));
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(m_prompter.messages(), QStringList{QStringLiteral("Die Eingabe kann nicht übernommen werden, weil...\n"
                                                                 "...die Postleitzahl in Deutschland aus 5 Ziffern bestehen muss.")});
        QVERIFY(d.isVisible());
        QCOMPARE(field("plz")->text(), QStringLiteral("7833"));

        test::typeInto(field("plz"), QStringLiteral("78333"));
        child<QPushButton>(d, "ok")->click();
        QCOMPARE(d.result(), int(QDialog::Accepted));

        OwnDataDialog again(context());
        QCOMPARE(child<QLineEdit>(again, qPrintable(field("name")->objectName()))->text(), QStringLiteral("Forst O'Neill"));
        QCOMPARE(child<QLineEdit>(again, qPrintable(field("iban")->objectName()))->text(), QStringLiteral("DE89370400440532013000"));
        QCOMPARE(child<QComboBox>(again, "kom(0)")->currentData().toInt(), int(parties::TaxRegime::Flat24));
    }
};

QTEST_MAIN(TestOwnDataDialog)
#include "tst_owndatadialog.moc"
