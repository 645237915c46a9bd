#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace quellix {

// An element of an XML document that has ended: the names of those that it lies in and its own,
// without prefixes, "/" between them; and the text in it, without that of elements below it, blanks
// around it taken away.
using XmlElementEnd = std::function<void(const std::string& path, const std::string& text)>;

// Hands out the elements of a document (UTF-8, or UTF-16LE as Windows writes it) as they end.
// Attributes are passed over, and entities that the document defines are refused. Throws Error for
// what is not well formed or is nested deeper than 64 elements; what has ended by then was handed
// out.
void ReadXml(std::string_view bytes, const XmlElementEnd& ended);

}  // namespace quellix
