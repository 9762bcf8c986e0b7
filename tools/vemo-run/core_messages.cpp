// Counting the core's messages.
#include "core_messages.h"

#include <string>
#include <unordered_map>
#include <vector>

#include "core/host.h"

namespace {

// A program that logs a new text every frame (an address, a value) could grow the list without
// end; past this many distinct texts, further new ones are only counted.
constexpr size_t MAX_DISTINCT = 10000;

struct message_count {
    std::string text;
    long count;
    long first_frame;
};

struct message_list {
    std::vector<message_count> messages;
    std::unordered_map<std::string, size_t> index;
    long frame = 0;
    long total = 0;
    long not_kept = 0;  // messages whose text came after the list was full
} list;

void observe(const char* message) {
    std::string text = message;
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    ++list.total;
    auto found = list.index.find(text);
    if (found != list.index.end()) {
        ++list.messages[found->second].count;
        return;
    }
    if (list.messages.size() >= MAX_DISTINCT) {
        ++list.not_kept;
        return;
    }
    list.index.emplace(text, list.messages.size());
    list.messages.push_back({std::move(text), 1, list.frame});
}

}  // namespace

void core_messages_start() {
    list = message_list{};
    log_observer = observe;
}

void core_messages_frame(long frame) { list.frame = frame; }

void core_messages_print(FILE* out) {
    std::fprintf(out, "core messages: %zu distinct, %ld in all\n", list.messages.size(), list.total);
    if (!list.messages.empty()) std::fprintf(out, "      times  first frame  message\n");
    for (const message_count& m : list.messages) {
        char first[24];
        if (m.first_frame == 0) std::snprintf(first, sizeof first, "start-up");
        else std::snprintf(first, sizeof first, "%ld", m.first_frame);
        std::fprintf(out, "%11ld  %11s  %s\n", m.count, first, m.text.c_str());
    }
    if (list.not_kept)
        std::fprintf(out, "(%ld more messages had texts beyond the first %zu distinct ones)\n", list.not_kept,
                     MAX_DISTINCT);
}

void core_messages_stop() { log_observer = nullptr; }
