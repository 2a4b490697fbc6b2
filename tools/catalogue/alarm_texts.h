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

    /// The position as the module reads it where it looks for values: 0 without a digit in front.
    unsigned number() const;

    /// The position as the module reads it where it fills texts: blanks and a sign count. Large for
    /// a negative one.
    unsigned shownNumber() const;
};

/// The placeholders of `text` that the module fills, outside its blocks in braces if `skipBlocks`.
std::vector<PlaceholderText> placeholdersIn(std::string_view text, bool skipBlocks);

/// A block in braces of a detail, the braces included.
struct Block {
    std::size_t open;
    std::size_t close;
};

/// The blocks; the last has `close` npos when it is not closed.
std::vector<Block> blocksIn(std::string_view text);

/// A "##" of a detail as the module meets it while it looks for values: inside a block, too.
struct DetailMark {
    std::size_t at;
    unsigned number;
    bool isFirst;      ///< no mark before it has the number, so it decides how the value is shown
    std::size_t open;  ///< of the block that it takes as its value map; npos for none
};

struct DetailMarks {
    std::vector<DetailMark> marks;  ///< those that get a value
    std::size_t stop;               ///< the mark where the module gives up; npos when it does not
};

DetailMarks marksIn(std::string_view detail);

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

/// An enumerated parameter that "paramDesc" names, as the module reads it.
struct EnumeratedParameter {
    std::size_t at;         ///< of the item in the text
    std::string_view item;  ///< the whole of it
    unsigned position;
    std::string type;

    /// True for a position of digits that a placeholder can name and a type without blanks around.
    bool isWellFormed() const;
};

std::vector<EnumeratedParameter> enumeratedParameters(const Definition& definition);

/// What the module makes of `text` with the value pairs; nothing when it refuses the text.
std::optional<std::string> filled(std::string_view text,
                                  const std::vector<std::pair<unsigned, std::string>>& pairs);

/// More fields than two digits can name, each telling its number; what the module is tried with.
std::vector<std::string> sampleFields();

}  // namespace talvik::ctl
