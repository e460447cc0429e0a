#include "PropertyList.h"

#include <gtest/gtest.h>

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

/// The same lists read and written by libplist: what other programs make of ours, and we of theirs.

namespace
{

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};

using Node = std::unique_ptr<void, NodeDeleter>;

Node read(const QByteArray& bytes)
{
    plist_t node = nullptr;
    plist_from_memory(bytes.constData(), static_cast<uint32_t>(bytes.size()), &node);
    return Node(node);
}

QByteArray written(const Node& node, bool binary)
{
    char* bytes = nullptr;
    uint32_t size = 0;
    if (binary) {
        plist_to_bin(node.get(), &bytes, &size);
    } else {
        plist_to_xml(node.get(), &bytes, &size);
    }
    QByteArray copy(bytes, static_cast<qsizetype>(size));
    if (binary) {
        plist_to_bin_free(bytes);
    } else {
        plist_to_xml_free(bytes);
    }
    return copy;
}

QVariantMap sample()
{
    return {
        {u"text"_s, u"Zoë & <Søn> 😀"_s},
        {u"number"_s, qlonglong{1234567890123}},
        {u"real"_s, 0.25},
        {u"yes"_s, true},
        {u"data"_s, QByteArray("\x00\x01\xFF", 3)},
        {u"date"_s, QVariant::fromValue(PropertyList::Date{561115152.0})},
        {u"list"_s, QVariantList{qlonglong{1}, u"two"_s, QVariantMap{{u"three"_s, false}}}},
    };
}

void expectSampleIn(const Node& node)
{
    ASSERT_NE(node, nullptr);
    char* text = nullptr;
    plist_get_string_val(plist_dict_get_item(node.get(), "text"), &text);
    EXPECT_EQ(QString::fromUtf8(text), u"Zoë & <Søn> 😀"_s);
    std::free(text); // NOLINT(cppcoreguidelines-no-malloc): as libplist allocates it
    uint64_t number = 0;
    plist_get_uint_val(plist_dict_get_item(node.get(), "number"), &number);
    EXPECT_EQ(number, 1234567890123U);
    double real = 0;
    plist_get_real_val(plist_dict_get_item(node.get(), "real"), &real);
    EXPECT_EQ(real, 0.25);
    int32_t seconds = 0;
    int32_t microseconds = -1;
    plist_get_date_val(plist_dict_get_item(node.get(), "date"), &seconds, &microseconds);
    EXPECT_EQ(seconds, 561115152);
    EXPECT_EQ(microseconds, 0);
    EXPECT_EQ(plist_array_get_size(plist_dict_get_item(node.get(), "list")), 3U);
}

} // namespace

TEST(PropertyListPeerTest, whatIsWrittenIsReadByLibplist)
{
    expectSampleIn(read(PropertyList::toXml(sample()).value()));
    expectSampleIn(read(PropertyList::toBinary(sample()).value()));
}

TEST(PropertyListPeerTest, whatLibplistWritesIsRead)
{
    const Node node = read(PropertyList::toBinary(sample()).value());
    ASSERT_NE(node, nullptr);
    for (const bool binary : {true, false}) {
        const Result<QVariant> parsed = PropertyList::parse(written(node, binary));
        ASSERT_TRUE(parsed.ok()) << parsed.error().message.toStdString();
        EXPECT_EQ(parsed.value().toMap(), sample()) << (binary ? "binary" : "XML");
    }
}
