#pragma once
// Before a harvester's logs are stored: each species group of the file beside a species of the
// master data, and each product taken or left out, with a quality class if wanted.
#include "devices/harvesterfile.h"
#include "devices/speciesmapping.h"

#include <QDialog>

class QTableWidget;

namespace tarvik {

class HarvesterMappingDialog : public QDialog {
    Q_OBJECT
public:
    // species and qualities are the master data's lists; mapping is what the rows start with.
    HarvesterMappingDialog(const HarvesterFile& file, const HarvesterMapping& mapping, const QStringList& species,
                           const QStringList& qualities, QWidget* parent = nullptr);
    // The choices as the rows show them now.
    HarvesterMapping mapping() const;

private:
    const HarvesterFile& m_file;
    QTableWidget* m_species;
    QTableWidget* m_products;
};

} // namespace tarvik
