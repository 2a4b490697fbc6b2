#pragma once

#include "tools/catalogue/catalogue_files.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a definition's texts are made of. What they become is asked of the module's own code.
namespace talvik::ctl {

/// A "##" and the up to two characters behind it.
struct PlaceholderText {
    std::size_t at;
    std::string_view position;

    /// True for the right form: two digits.
    bool isTwoDigits() const;

    /// The position, for the right form or one digit; otherwise 0, as the module reads it.
    unsigned number() const;
};

/// The placeholders of `text` outside its blocks in braces if `skipBlocks`.
std::vector<PlaceholderText> placeholdersIn(std::string_view text, bool skipBlocks);

/// A block in braces of a detail, the braces included.
struct Block {
    std::size_t open;
    std::size_t close;
};

/// The blocks; the last has `close` npos when it is not closed.
std::vector<Block> blocksIn(std::string_view text);

/// An item raw:shown of a value map.
struct MapItem {
    std::size_t at;
    std::string_view text;

    /// True with one ":" exactly; the module cannot use others.
    bool isWellFormed() const;
    std::string raw() const;
    std::string shown() const;
};

/// The items of the block of `detail` that are not empty.
std::vector<MapItem> itemsIn(std::string_view detail, const Block& block);

/// The enumerated parameters that "paramDesc" names, as far as they are well formed: position and
/// type.
struct EnumeratedParameter {
    std::size_t at;  ///< of the item in the text
    unsigned position;
    std::string type;
};

std::vector<EnumeratedParameter> enumeratedParameters(const Definition& definition);

/// What the module makes of `text` with the value pairs; nothing when it refuses the text.
std::optional<std::string> filled(std::string_view text,
                                  const std::vector<std::pair<unsigned, std::string>>& pairs);

/// More fields than two digits can name, each telling its number; what the module is tried with.
std::vector<std::string> sampleFields();

}  // namespace talvik::ctl
