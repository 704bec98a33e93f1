// A harness without libFuzzer: the inputs of the corpus, these with some bytes changed, and others at random.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

using Input = std::vector<char>;

static void run(Input const& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
}

// A harness ends the process where something is wrong.
TEST(ZT_REPLAY, CorpusAndRandomInputs)
{
    static char name[] = "replay", *names[] = {name, nullptr}, **arguments = names;
    static int argumentCount = 1; // the application keeps them
    LLVMFuzzerInitialize(&argumentCount, &arguments);
    std::vector<Input> corpus;
    for (auto const& entry : std::filesystem::directory_iterator(ZT_CORPUS))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        run(corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
    }
    ASSERT_FALSE(corpus.empty());
    std::mt19937 random(1);
    for (int i = 0; i < 200; ++i)
    {
        Input input(random() % 1000), changed = corpus[random() % corpus.size()];
        std::generate(input.begin(), input.end(), [&random] { return char(random()); });
        for (std::size_t k = 0; !changed.empty() && k < random() % 8; ++k)
            changed[random() % changed.size()] = changed[random() % changed.size()];
        run(input);
        run(changed);
    }
}
