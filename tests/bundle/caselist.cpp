#include "tests/bundle/caselist.h"

#include "tests/bundle/text.h"
#include <regex>
#include <sstream>

namespace {

std::pair<std::wstring, std::wstring> Assignment(const std::string& text) {
    const std::size_t sign = text.find('=');
    return {Wide(text.substr(0, sign)), Unescaped(text.substr(sign + 1))};
}

Expectation ReadExpectation(const std::string& text, const std::string& folder) {
    const bool isPattern = text.starts_with("like ");
    return {isPattern, Replaced(UnescapedBytes(isPattern ? text.substr(5) : text), "{bundle}", folder)};
}

// Takes a line of an answer; any other is left.
bool TakeAnswer(Answer& answer, const std::string& key, const std::string& value, const std::string& folder) {
    if (key == "code") {
        answer.code = static_cast<std::uint32_t>(std::stoul(value));
    } else if (key == "output") {
        answer.output = ReadExpectation(value, folder);
    } else if (key == "transcript") {
        answer.transcript = ReadExpectation(value, folder);
    } else {
        return false;
    }
    return true;
}

void TakeLine(TestCase& row, const std::string& key, const std::string& value, const std::string& folder) {
    if (TakeAnswer(row.expected, key, value, folder)) {
        return;
    }
    if (key == "wine") {
        const std::size_t blank = value.find(' ');
        if (!TakeAnswer(row.underWine, value.substr(0, blank), value.substr(blank + 1), folder)) {
            row.skippedUnderWine = value.substr(blank + 1);
        }
    } else if (key == "program") {
        row.program = Wide(value);
    } else if (key == "line") {
        row.line = Wide(Replaced(Narrow(Unescaped(value)), "{bundle}", folder));
    } else if (key == "limit") {
        row.limit = static_cast<std::uint32_t>(std::stoul(value));
    } else if (key == "client") {
        row.client = value;
    } else if (key == "skip") {
        row.skipped = value;
    } else if (key == "user" || key == "machine" || key == "env") {
        (key == "user" ? row.user : key == "machine" ? row.machine : row.environment).push_back(Assignment(value));
    } else if (key == "file") {
        row.files.push_back({Unescaped(value), {}});
    } else if (key == "content") {
        row.files.back().content = UnescapedBytes(value);
    } else if (key == "times") {
        row.files.back().times = std::stoul(value);
    }
}

} // namespace

bool Expectation::IsMetBy(const std::string& found) const {
    return isPattern ? std::regex_match(found, std::regex(text)) : found == text;
}

CaseList ReadCases(const std::wstring& path, const std::string& folder) {
    CaseList list;
    std::istringstream stream(ReadWhole(path));
    for (std::string line; std::getline(stream, line);) {
        const std::size_t blank = std::min(line.find(' '), line.size());
        const std::string key = line.substr(0, blank);
        const std::string value = line.substr(std::min(blank + 1, line.size()));
        if (key == "version") {
            list.version = value;
        } else if (key == "case") {
            list.cases.emplace_back().name = value;
        } else if (!key.empty()) {
            TakeLine(list.cases.back(), key, value, folder);
        }
    }
    return list;
}
