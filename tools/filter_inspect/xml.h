#ifndef FILTER_INSPECT_TOOLS_XML_H_
#define FILTER_INSPECT_TOOLS_XML_H_

#include <string>
#include <string_view>

namespace FilterInspectTool {

// Returns the text in ASCII, as the content of an XML element or attribute. Bytes that are not a
// UTF-8 character, and characters that XML does not admit, become question marks.
std::string inXml(std::string_view text);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_XML_H_
