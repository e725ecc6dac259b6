#pragma once
// Every command of tarvik-cli, in the order the usage text lists them.
#include "cli/command.h"

#include <memory>
#include <vector>

namespace tarvik::cli {

std::unique_ptr<Command> makeInitCommand();
std::unique_ptr<Command> makeHiebeCommand();
std::unique_ptr<Command> makeHolzlisteCommand();
std::unique_ptr<Command> makeRechnungCommand();
std::unique_ptr<Command> makeDruckenCommand();
std::unique_ptr<Command> makeNeuberechnenCommand();
std::unique_ptr<Command> makeListeCommand();
std::unique_ptr<Command> makeSicherungCommand();
std::unique_ptr<Command> makeWiederherstellenCommand();
std::unique_ptr<Command> makeKomprimierenCommand();
std::unique_ptr<Command> makeUebernahmeCommand();
std::unique_ptr<Command> makeGeraeteimportCommand();
std::unique_ptr<Command> makeExportCommand();
std::unique_ptr<Command> makeImportCommand();
std::unique_ptr<Command> makeEigeneAngabenCommand();
std::unique_ptr<Command> makeAbnehmerCommand();
std::unique_ptr<Command> makeErechnungCommand();
std::unique_ptr<Command> makeEldatCommand();

const std::vector<std::unique_ptr<Command>>& allCommands();
const Command* findCommand(const QString& name);

} // namespace tarvik::cli
