// A plug-in that misbehaves on demand. The name under which it is started says how and where: "dies.Echo"
// dies when Echo is called, "exits.start" exits before it reads anything, "hangs.create2" hangs when it is
// asked for its second object, "refuses.createlater" gives no object but the first, "minimal.plugin" knows
// neither range nor while nor sequence nor fetch. What it is asked is written to the file of its name with
// ".log" behind it.
//
// SetDocumentID takes what the document is like: "300" has 300 items of each kind; "300 unknown" does not
// know its number of sentences; "300 error 5" raises an error for sentence 5; "3 big" has sentences of 2 MB;
// "3 lasterror 7" answers 7 to GetLastErrorNumber, "3 tagerror 7" only
// after it was asked for its number of meta tags; "3 broken title" raises an error for the property title;
// "3 closed" cannot be opened; "300 early" gives the first sentences with their number, and "lies.toomany"
// gives more of them than it is asked for, "lies.endless" none and yet more, "lies.mute" not whether there
// are more.
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <utility>

#include <unistd.h>

namespace {

using nlohmann::json;

struct Failure {
    int code;
    std::string message;
};

struct Document {
    int items = 0;
    bool unknown = false;
    bool big = false;
    bool closed = false;
    bool early = false;
    int errorAt = 0;
    int lastError = 0;
    int tagError = 0;
    std::string brokenProperty;
    int read = 0;
};

class FaultyPlugin {
  public:
    explicit FaultyPlugin(const std::string& file) : log_(file + ".log", std::ios::app) {
        const std::string name = file.substr(file.find_last_of('/') + 1);
        fault_ = name.substr(0, name.find('.'));
        place_ = name.substr(name.find('.') + 1);
    }

    int run() {
        misbehaveAt("start", 1);
        std::string line;
        while (std::getline(std::cin, line)) {
            json request = json::parse(line);
            reply(request["id"].get<int>(), request["method"], request["params"]);
        }
        return 0;
    }

  private:
    void reply(int id, const std::string& method, const json& params) {
        const std::string place = placeOf(method);
        log_ << method;
        for (const char* part : {"method", "methods", "arguments", "first", "last", "count", "path"}) {
            if (params.contains(part) && !(params[part].is_array() && params[part].empty())) {
                log_ << ' ' << params[part].dump().substr(0, 100);
            }
        }
        log_ << std::endl;
        misbehaveAt(place, id);
        json answer = {{"jsonrpc", "2.0"}, {"id", id}};
        try {
            if (fault_ == "refuses" && place == place_) {
                throw Failure{1234, "it went wrong"};
            }
            answer["result"] = perform(method, params, id);
        } catch (const Failure& failure) {
            answer["error"] = {{"code", failure.code}, {"message", failure.message}};
        }
        if (!answered_) {
            std::cout << answer.dump() << std::endl;
        }
        answered_ = false;
        if (place == place_) {
            misbehaveAfterTheAnswer();
        }
    }

    /// The request's method; with a number behind it when this one of them is the place to misbehave, and
    /// with "later" when that is every one but the first.
    std::string placeOf(const std::string& method) {
        const int number = ++requests_[method];
        const std::string numbered =
            method + (place_ == method + "later" && number > 1 ? "later" : std::to_string(number));
        return numbered == place_ ? numbered : method;
    }

    void misbehaveAfterTheAnswer() const {
        if (fault_ == "chatters") {
            std::cout << "by the way" << std::endl;
        } else if (fault_ == "dozes") {
            stop();
        } else if (fault_ == "halts") {  // until it is told to go on
            raise(SIGSTOP);
        } else if (fault_ == "quits") {
            std::_Exit(0);
        }
    }

    json perform(const std::string& method, const json& params, int id) {
        const bool minimal = fault_ == "minimal";
        if (method == "create") {
            documents_[++last_] = {};
            return last_;
        }
        if ((method == "release" || method == "fetch") && !minimal) {
            return nullptr;
        }
        if (method == "call") {
            return call(documents_.at(params["object"]), params["method"], params["arguments"], id);
        }
        if (method == "range" && !minimal) {
            return range(documents_.at(params["object"]), params, id);
        }
        if (method == "sequence" && !minimal) {
            return sequence(documents_.at(params["object"]), params, id);
        }
        if (method == "while" && !minimal) {
            return takeWhile(documents_.at(params["object"]), params["count"], id);
        }
        throw Failure{-32601, "no method " + method};
    }

    json call(Document& document, const std::string& method, json arguments, int id) {
        misbehaveAt(method, id);
        if (method == "SetDocumentID") {
            document = describe(arguments[0].is_string() ? arguments[0].get<std::string>() : "0");
            return {{"result", !document.closed}};
        } else if (method == "GetProcessID") {
            return {{"result", static_cast<int>(getpid())}};
        } else if (method == "StartHelper") {
            return {{"result", startHelper()}};
        } else if (method == "Echo") {
            return {{"result", arguments[0]}};
        } else if (method == "GetLastErrorNumber") {
            return {{"result", document.lastError}};
        } else if (method == "GetDocumentProperty") {
            if (arguments[0] == document.brokenProperty) {
                throw Failure{78, "property is broken"};
            }
            return {{"result", arguments[0]}};
        } else if (method == "Swap") {
            return {{"result", nullptr}, {"arguments", {arguments[1], arguments[0]}}};
        } else if (method == "Number") {
            return {{"result", json::parse(arguments[0].get<std::string>())}};
        } else if (method == "Fail") {
            throw Failure{1234, "it went wrong"};
        } else {
            return {{"result", item(document, method, arguments)}};
        }
        return {{"result", true}};
    }

    static Document describe(const std::string& text) {
        Document document;
        std::istringstream words(text);
        std::string word;
        words >> document.items;
        while (words >> word) {
            document.unknown = document.unknown || word == "unknown";
            document.big = document.big || word == "big";
            document.closed = document.closed || word == "closed";
            document.early = document.early || word == "early";
            if (word == "error") {
                words >> document.errorAt;
            }
            if (word == "lasterror") {
                words >> document.lastError;
            }
            if (word == "tagerror") {
                words >> document.tagError;
            }
            if (word == "broken") {
                words >> document.brokenProperty;
            }
        }
        return document;
    }

    static json item(Document& document, const std::string& method, const json& arguments) {
        if (method == "GetNumberOfSentences" && document.unknown) {
            return -1;
        }
        if (method == "GetNumberofMetaTags" && document.tagError != 0) {
            document.lastError = document.tagError;
        }
        if (method.starts_with("GetNumber")) {
            return document.items;
        }
        if (method == "MoreSentences") {
            return document.read < document.items;
        }
        const bool next = method == "GetNextSentence";
        const int index = next ? ++document.read : arguments.at(0).get<int>();
        if (index == document.errorAt) {
            throw Failure{77, "item " + std::to_string(index) + " is broken"};
        }
        return method + std::to_string(index) + (document.big ? std::string(2 * 1024 * 1024, 'x') : "");
    }

    json range(Document& document, const json& params, int id) {
        const int first = params["first"];
        int last = params["last"];
        if (fault_ == "fewer") {
            last = std::min(last, first + 9);
        }
        json answer = {{"results", json::array()}};
        try {
            for (int index = first; index <= last; ++index) {
                for (const std::string method : params["methods"]) {
                    misbehaveAt(method, id);
                    answer["results"].push_back(item(document, method, {index}));
                }
            }
        } catch (const Failure& failure) {
            answer["error"] = {{"code", failure.code}, {"message", failure.message}};
        }
        if (fault_ == "overdoes") {
            answer["results"].push_back("one too many");
        }
        if (fault_ == "withholds") {
            answer["results"].clear();
        }
        return answer;
    }

    json sequence(Document& document, const json& params, int id) {
        const json& calls = params["calls"];
        json answer = {{"results", json::array()}};
        try {
            for (const json& step : calls) {
                const std::string method = step["method"];
                log_ << "step " << method;
                if (!step["arguments"].empty()) {
                    log_ << ' ' << step["arguments"].dump();
                }
                log_ << std::endl;
                const json result = call(document, method, step["arguments"], id)["result"];
                answer["results"].push_back(result);
                if (step.contains("expect") && result != step["expect"]) {
                    break;
                }
                if (fault_ == "fewer" && place_ != "items") {
                    break;
                }
            }
        } catch (const Failure& failure) {
            answer["error"] = {{"code", failure.code}, {"message", failure.message}};
        }
        if (params.contains("items") && document.early && answer["results"].size() == calls.size()) {
            goOnWithItems(document, params["items"], answer, id);
        }
        if (fault_ == "overdoes") {
            answer["results"].insert(answer["results"].end(), calls.size(), nullptr);
        }
        if (fault_ == "withholds") {
            answer["results"].clear();
        }
        return answer;
    }

    /// Adds the first items to the answer to a sequence that has counted them.
    void goOnWithItems(Document& document, const json& params, json& answer, int id) {
        const int count = answer["results"].back();
        const int most = params["count"];
        log_ << "items " << most << std::endl;
        json items =
            count == -1
                ? takeWhile(document, most, id)
                : range(document,
                        {{"methods", params["methods"]}, {"first", 1}, {"last", std::min(count, most)}}, id);
        if (place_ == "toomany") {
            items["results"].insert(items["results"].end(), static_cast<std::size_t>(most) + 1, "x");
        } else if (place_ == "endless") {
            items = {{"results", json::array()}, {"more", true}};
        } else if (place_ == "mute") {
            items.erase("more");
        }
        answer["results"].insert(answer["results"].end(), items["results"].begin(), items["results"].end());
        items.erase("results");
        answer.update(items);
    }

    json takeWhile(Document& document, int count, int id) {
        json answer = {{"results", json::array()}, {"more", true}};
        try {
            while (count-- > 0) {
                if (!item(document, "MoreSentences", json::array()).get<bool>()) {
                    answer["more"] = false;
                    break;
                }
                misbehaveAt("GetNextSentence", id);
                answer["results"].push_back(item(document, "GetNextSentence", json::array()));
            }
        } catch (const Failure& failure) {
            answer["error"] = {
                {"code", failure.code}, {"message", failure.message}, {"method", "GetNextSentence"}};
        }
        return answer;
    }

    void misbehaveAt(const std::string& place, int id) {
        if (place != place_) {
            return;
        }
        const std::string answer = R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + R"(,"result":)";
        if (fault_ == "dies") {
            kill(getpid(), SIGKILL);
        } else if (fault_ == "exits") {
            std::_Exit(3);
        } else if (fault_ == "hangs") {
            stop();
        } else if (fault_ == "closes") {
            close(STDOUT_FILENO);
            stop();
        } else if (fault_ == "mumbles") {
            say("Segmentation fault\x01\xFF?");
        } else if (fault_ == "breaksoff") {
            std::cout << answer << std::flush;
            std::_Exit(0);
        } else if (fault_ == "bloats") {
            forever(std::string(65536, 'x'));
        } else if (fault_ == "floods") {
            forever(R"({"jsonrpc":"2.0","id":999999,"result":null})"
                    "\n");
        } else if (fault_ == "misnumbers") {
            say(R"({"jsonrpc":"2.0","id":4711,"result":{"result":1}})");
        } else if (fault_ == "evades") {
            say(R"({"jsonrpc":"2.0","id":)" + std::to_string(id) + "}");
        } else if (fault_ == "lists") {
            say(answer + R"({"result":[1]}})");
        } else if (fault_ == "understates") {
            say(answer + R"("text"})");
        }
    }

    /// A process that never ends by itself; its number.
    static int startHelper() {
        const pid_t helper = fork();
        if (helper == 0) {
            stop();
        }
        return helper;
    }

    /// Says this in the place of the answer.
    void say(const std::string& line) {
        std::cout << line << std::endl;
        answered_ = true;
    }

    [[noreturn]] static void stop() {
        for (;;) {
            pause();
        }
    }

    [[noreturn]] static void forever(const std::string& text) {
        for (;;) {
            std::cout << text << std::flush;
        }
    }

    std::ofstream log_;
    std::string fault_;
    std::string place_;
    std::map<int, Document> documents_;
    std::map<std::string, int> requests_;  // how many of each method
    int last_ = 0;
    bool answered_ = false;
};

}  // namespace

int main(int, char** argv) {
    return FaultyPlugin(argv[0]).run();
}
