#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// Steps of filling parameters into alarm texts. No state; callable from any thread.
///
///     placeholder ::= "##" digit digit [ no more than 3 characters value-map ]
///     value-map   ::= "{" raw ":" shown { ";" raw ":" shown } "}"      (in a detail only)
///
/// Texts and values come from outside, so what they ask for is bounded:
///
/// - A value may itself hold placeholders. One that leads back to itself would never end; filling
///   stops when a value is asked for within its own expansion (or a second time with nothing left
///   behind it), which is the case exactly when it would not end.
/// - Values that do end may still double at each level. Filling a text stops when placeholders that
///   stand at least partly in values exceed `kMaxNestedSubstitutions`, or what these wrote exceeds
///   `kMaxNestedLength`. Texts whose values form no placeholder are never stopped, whatever their
///   size.
///
/// Where it stops, the text is delivered as it is by then, with the rest of its placeholders in it,
/// and a warning names the place.
namespace talvik {

constexpr std::size_t kMaxNestedSubstitutions = 65536;
constexpr std::size_t kMaxNestedLength = 16777216;  // 16 MiB

}  // namespace talvik

// Contract: the misspelt names of two of these are what hosts and their tests link against.

/// Appends the value pairs that `detail` makes of the fields in `list`: one for each of its
/// placeholders, by its value map where it has one, then one for each field that no pair has the
/// position of yet.
void parserParmeterByDetail(std::vector<std::string>& list,
                            std::vector<std::pair<unsigned int, std::string>>& pairs,
                            const std::string& detail);

/// Deletes every block from "{" through the next "}".
void replaceBraceWithEmptyString(std::string& text);

/// Writes the value of the first pair with position `pos` over `length` characters of `text` from
/// `start` (fewer at the text's end). False, with `text` untouched, when there is none or `start`
/// lies beyond the text.
bool replaceParaWithBraceValue(std::string& text, int pos, unsigned long start,
                               unsigned long length,
                               const std::vector<std::pair<unsigned int, std::string>>& pairs);

/// `text` with every `from` replaced by `to`; inserted text is not searched again. An empty `from`,
/// which would match for ever, leaves the text as it is, with a warning.
std::string relpacestr(std::string text, std::string from, std::string to);
