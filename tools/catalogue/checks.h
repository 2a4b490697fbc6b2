#pragma once

#include "tools/catalogue/catalogue_files.h"

/// The rules that a catalogue is checked against, one source a subject.
namespace talvik::ctl {

/// Looks at the ids.
void checkIds(const JsonDocument& file, const std::vector<Definition>& definitions,
              Findings& findings);

/// Looks at the trap OIDs.
void checkOids(const JsonDocument& file, const std::vector<Definition>& definitions,
               Findings& findings);

/// What a string of the files is for.
enum class Use { Shown, Internal };

/// Looks at one string of the files: characters that managers cannot show, or nobody sees.
void checkCharacters(const JsonDocument& file, const Json::Value& value, const std::string& subject,
                     Use use, Findings& findings);

/// Looks at a value map's item or a literal: a text that operators take for a missing value.
void checkShownValue(const std::string& shown, const std::string& subject, Place place,
                     Findings& findings);

/// Looks at the texts of a definition as they are, without their placeholders.
void checkTexts(const JsonDocument& file, const Definition& definition, Findings& findings);

/// Looks at the placeholders of all texts of a definition.
void checkPlaceholders(const JsonDocument& file, const Definition& definition, Findings& findings);

/// Looks at the value maps. `enumerations` is null when they are not known.
void checkValueMaps(const JsonDocument& file, const Definition& definition,
                    const std::vector<Enumeration>* enumerations, Findings& findings);

/// Looks at the enumerated parameters. `enumerations` is null when they are not known.
void checkParamDesc(const JsonDocument& file, const Definition& definition,
                    const std::vector<Enumeration>* enumerations, Findings& findings);

/// Looks at the enumerations themselves and at which of them `definitions` use.
void checkEnumerations(const JsonDocument& file, const std::vector<Enumeration>& enumerations,
                       const std::vector<Definition>& definitions, Findings& findings);

}  // namespace talvik::ctl
