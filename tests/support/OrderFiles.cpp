#include "tests/support/OrderFiles.h"

#include <stdexcept>

namespace test {

namespace plist = platform::plist;

Texts numbered(int count, const std::string& name)
{
    Texts texts;
    for (int n = 1; n <= count; ++n)
        texts.push_back(std::to_string(n) + " " + name + " " + std::to_string(n));
    return texts;
}

plist::Dictionary orderFile(const Texts& order)
{
    plist::Dictionary dictionary;
    dictionary.set(kOrder, plist::Array(order.begin(), order.end()));
    return dictionary;
}

std::string orderBytes(const Texts& order)
{
    return plist::write({plist::Value(orderFile(order)), plist::Form::xml});
}

void writeDictionary(const Path& file, const plist::Dictionary& dictionary, plist::Form form)
{
    write(file, plist::write({plist::Value(dictionary), form}));
}

plist::Dictionary readDictionary(const Path& file)
{
    auto document = plist::parse(read(file));
    if (!document || !document->root.asDictionary())
        throw std::runtime_error("no dictionary in " + file.native());
    return *document->root.asDictionary();
}

Texts textsAt(const Path& file, const char* key)
{
    const plist::Dictionary dictionary = readDictionary(file);
    const plist::Value* value = dictionary.find(key);
    if (!value || !value->asArray())
        throw std::runtime_error(std::string("no array ") + key);
    Texts texts;
    for (const plist::Value& element : *value->asArray()) {
        if (!element.asString())
            throw std::runtime_error("an element is no text");
        texts.push_back(*element.asString());
    }
    return texts;
}

} // namespace test
