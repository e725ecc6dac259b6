#pragma once
// EF_Eingabe_Pfaehle: poles counted by class and priced per piece.
#include "entry/poleentry.h"
#include "entry/ui/entrywindow.h"

namespace tarvik {

class PoleDialog : public EntryWindow {
    Q_OBJECT
public:
    PoleDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> poleId,
               std::optional<qint32> lotNr = std::nullopt, QWidget* parent = nullptr);

protected:
    void addFields(QFormLayout* form) override;
    void loadEntry(qint32 id) override;
    HarvestRows gridRows() const override;
    bool storeEntry() override;
    void afterNext() override;

private:
    PoleForm read() const;
    void showDerived(const PoleForm& form);
};

} // namespace tarvik
