#include "formats/pnml_reader.h"

#include <string_view>
#include <utility>

#include "base/messages.h"
#include "formats/pnml_document.h"
#include "formats/pnml_process.h"

namespace vorel::formats {
namespace {

using pnml::Document;
using pnml::XmlNode;

template <class Shape, class P>
std::unique_ptr<Shape> read_as(std::unique_ptr<Document> document, const XmlNode& net) {
  auto variant = std::make_unique<Shape>(std::in_place_type<P>);
  if (!pnml::read_process(std::move(document), net, std::get<P>(*variant))) return nullptr;
  return variant;
}

template <class Shape>
struct TypeRow {
  std::string_view type;
  std::unique_ptr<Shape> (*read)(std::unique_ptr<Document>, const XmlNode&);
};

// The row has no function for a process that the shape does not take.
template <class Shape, class P>
constexpr TypeRow<Shape> row(std::string_view type) {
  if constexpr (net::shape_accepts<Shape, P>) return {type, read_as<Shape, P>};
  return {type, nullptr};
}

template <class Shape>
constexpr TypeRow<Shape> type_table[] = {
    row<Shape, net::NetPrefix>("branching_process:low_level_net"),
    row<Shape, net::StgPrefix>("branching_process:STG"),
    row<Shape, net::NetMergedProcess>("merged_process:low_level_net"),
    row<Shape, net::StgMergedProcess>("merged_process:STG"),
};

template <class Shape>
std::unique_ptr<Shape> read_document(std::unique_ptr<Document> document) {
  if (document == nullptr) return nullptr;
  const XmlNode* const root = pnml::require_first_child(document->root(), "pnml");
  const XmlNode* const net = root == nullptr ? nullptr : pnml::require_first_child(*root, "net");
  const auto* const type = net == nullptr ? nullptr : pnml::require_attribute(*net, "type");
  if (type == nullptr) return nullptr;
  for (const TypeRow<Shape>& candidate : type_table<Shape>) {
    if (candidate.read != nullptr && candidate.type == pnml::value_of(*type)) {
      return candidate.read(std::move(document), *net);
    }
  }
  base::print_error(std::string("unexpected net type: ").append(pnml::value_of(*type)));
  return nullptr;
}

}  // namespace

template <class Shape>
std::unique_ptr<Shape> read_pnml(const std::string& file_name) {
  return read_document<Shape>(pnml::load_xml(file_name));
}

template <class Shape>
std::unique_ptr<Shape> read_pnml_text(std::string text) {
  return read_document<Shape>(Document::parse(std::move(text)));
}

#define INSTANTIATE(Shape)                                              \
  template std::unique_ptr<Shape> read_pnml<Shape>(const std::string&); \
  template std::unique_ptr<Shape> read_pnml_text<Shape>(std::string);
VOREL_FOR_EACH_SHAPE(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::formats
