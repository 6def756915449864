#include "program/commandline/Report.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "program/commandline/Terminal.h"

namespace commandline {

namespace {

using nlohmann::json;

std::string Printed(const json& value, int indent) {
  return value.dump(indent, ' ', false, json::error_handler_t::replace);
}

json JsonOf(const JsonMembers& members) {
  json object = json::object();
  for (const auto& [key, value] : members) object[key] = value.Json();
  return object;
}

}  // namespace

JsonValue::JsonValue() : json_(std::make_shared<json>()) {}

JsonValue::JsonValue(const std::string& text) : json_(std::make_shared<json>(text)) {}

JsonValue::JsonValue(const char* text) : json_(std::make_shared<json>(text)) {}

JsonValue::JsonValue(const std::vector<std::string>& texts)
    : json_(std::make_shared<json>(texts)) {}

JsonValue::JsonValue(bool yes) : json_(std::make_shared<json>(yes)) {}

JsonValue::JsonValue(std::int64_t number) : json_(std::make_shared<json>(number)) {}

Report::Report() : json_(std::make_unique<json>(json::object())) {}

Report::~Report() = default;

void Report::Put(const char* key, const JsonValue& value) { (*json_)[key] = value.Json(); }

void Report::PutObject(const char* key, const JsonMembers& members) {
  (*json_)[key] = JsonOf(members);
}

void Report::PutList(const char* key) { (*json_)[key] = json::array(); }

void Report::Append(const char* key, const JsonMembers& members) {
  (*json_)[key].push_back(JsonOf(members));
}

void Report::Print(bool asJson) const {
  if (asJson) {
    std::cout << Printed(*json_, 2) << '\n';
    return;
  }
  for (const std::string& line : lines_) std::cout << line << '\n';
}

std::string ValidUtf8(const std::string& text) {
  return json::parse(Printed(json(text), -1)).get<std::string>();
}

std::string JsonText(std::string_view text) {
  const std::string quoted = Printed(json(text), -1);
  return quoted.substr(1, quoted.size() - 2);
}

}  // namespace commandline
