#include "Portability/Misc/Sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct DigestCase {
    const char* id;
    std::string message;
    std::size_t piece;  // bytes given to each Update call
    const char* hex;
};

// FIPS 180-2 example messages, fed whole and in uneven pieces.
TEST(Sha256, KnownDigestsWhateverThePieces) {
    const std::string million(1000000, 'a');
    const DigestCase cases[] = {
        {"empty", "", 1, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {"abc", "abc", 3, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {"two-blocks", "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", 7,
         "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {"million-a", million, 4093, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    };
    for (const DigestCase& c : cases) {
        SCOPED_TRACE(c.id);
        Portability::Sha256 hash;
        for (std::size_t at = 0; at < c.message.size(); at += c.piece)
            hash.Update(c.message.data() + at, std::min(c.piece, c.message.size() - at));
        Portability::Sha256::Digest digest{};
        ASSERT_TRUE(hash.Finish(digest));
        EXPECT_EQ(Portability::ToHex(digest), c.hex);
        // Finish starts a new stream: the same object hashes the next message from scratch.
        hash.Update("abc", 3);
        ASSERT_TRUE(hash.Finish(digest));
        EXPECT_EQ(Portability::ToHex(digest), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    }
}

}  // namespace
