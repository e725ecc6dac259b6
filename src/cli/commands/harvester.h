#pragma once
// geraeteimport harvester: a harvester's production file into one lot of a harvest, with the
// species and products mapped from the command line over the remembered choices.
#include "cli/command.h"

namespace tarvik::cli {

extern const QCommandLineOption HarvesterSpeciesOption; // --baumart NAME=CODE, repeatable
extern const QCommandLineOption HarvesterWithoutOption; // --ohne-produkt NAME, repeatable
extern const QCommandLineOption HarvesterQualityOption; // --guete PRODUKT=KLASSE, repeatable

// Why the mapping options do not fit; empty when they do.
QString harvesterUsageProblem(const QCommandLineParser& parser);
int runHarvesterImport(const QCommandLineParser& parser, CommandContext& context, const QString& path, qint32 hiebNr, qint32 lot);

} // namespace tarvik::cli
