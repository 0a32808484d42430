#ifndef FILTER_INSPECT_TOOLS_XML_H_
#define FILTER_INSPECT_TOOLS_XML_H_

#include <string>
#include <string_view>

namespace FilterInspectTool {

// A text as the content of an element or an attribute of XML, in ASCII. Bytes that are no character
// of UTF-8 or that XML does not admit become question marks.
std::string inXml(std::string_view text);

}  // namespace FilterInspectTool

#endif  // FILTER_INSPECT_TOOLS_XML_H_
