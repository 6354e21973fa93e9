// The map with wide-string keys of 20 random letters, against the hash tables of others with their own strings.
//
// A fill starts from a default table and takes keys that exist, so that the strings which share their text only count
// it; dropping the table is not measured. Look-ups take all keys in a random order, as strings of their own whose text
// lies elsewhere.
#include "foundation/inc/map.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#ifdef BENCH_QT
#include <QHash>
#include <QString>
#endif
#ifdef BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif

namespace {

/// Keys of every string type, so that each table is asked for the same ones.
std::vector<std::u16string> RandomTexts(std::int64_t count) {
    std::mt19937_64 random(20); // NOLINT(cert-msc51-cpp): the same keys in every run
    std::vector<std::u16string> texts(static_cast<std::size_t>(count), std::u16string(20, u' '));
    for (std::u16string& text : texts) {
        for (char16_t& c : text) {
            c = static_cast<char16_t>(u'a' + random() % 26);
        }
    }
    return texts;
}

template <class TKey>
std::vector<TKey> MakeKeys(const std::vector<std::u16string>& texts) {
    std::vector<TKey> keys;
    keys.reserve(texts.size());
    for (const std::u16string& text : texts) {
        if constexpr (std::is_constructible_v<TKey, const char16_t*, std::int32_t>) {
            keys.emplace_back(text.data(), static_cast<std::int32_t>(text.size()));
        } else {
            keys.emplace_back(text.begin(), text.end());
        }
    }
    return keys;
}

struct CWithAdd {
    using TKey = Tsx::CUnicodeString;
    Tsx::CMap<TKey, std::int64_t, Tsx::CStringKeyTraits> map;
    void Insert(const TKey& key, std::int64_t value) { map.Add(key, value); }
    std::int64_t Find(const TKey& key) const { return *map.Find(key); }
};

struct CWithSet : CWithAdd {
    void Insert(const TKey& key, std::int64_t value) { map.Set(key, value); }
};

struct CStandard {
    using TKey = std::u16string;
    std::unordered_map<TKey, std::int64_t> map;
    void Insert(const TKey& key, std::int64_t value) { map.insert_or_assign(key, value); }
    std::int64_t Find(const TKey& key) const { return map.find(key)->second; }
};

#ifdef BENCH_QT
struct CQtString : QString {
    CQtString(const char16_t* text, std::int32_t size) : QString(reinterpret_cast<const QChar*>(text), size) {}
};
struct CQt {
    using TKey = CQtString;
    QHash<QString, std::int64_t> map;
    void Insert(const TKey& key, std::int64_t value) { map.insert(key, value); }
    std::int64_t Find(const TKey& key) const { return *map.constFind(key); }
};
#endif

#ifdef BENCH_ABSL
struct CAbseil {
    using TKey = std::u16string;
    absl::flat_hash_map<TKey, std::int64_t> map;
    void Insert(const TKey& key, std::int64_t value) { map.insert_or_assign(key, value); }
    std::int64_t Find(const TKey& key) const { return map.find(key)->second; }
};
#endif

template <class TTable>
void InsertAll(TTable& table, const std::vector<typename TTable::TKey>& keys) {
    std::int64_t value = 0;
    for (const auto& key : keys) {
        table.Insert(key, ++value);
    }
}

template <class TTable>
void Fill(benchmark::State& state) {
    const auto keys = MakeKeys<typename TTable::TKey>(RandomTexts(state.range(0)));
    for (auto _ : state) {
        TTable table;
        const auto start = std::chrono::steady_clock::now();
        InsertAll(table, keys);
        state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class TTable>
void LookUp(benchmark::State& state) {
    std::vector<std::u16string> texts = RandomTexts(state.range(0));
    const auto keys = MakeKeys<typename TTable::TKey>(texts);
    TTable table;
    InsertAll(table, keys);
    std::shuffle(texts.begin(), texts.end(), std::mt19937_64(33)); // NOLINT(cert-msc51-cpp)
    const auto wanted = MakeKeys<typename TTable::TKey>(texts);
    for (auto _ : state) {
        std::int64_t sum = 0;
        for (const auto& key : wanted) {
            sum += table.Find(key);
        }
        benchmark::DoNotOptimize(std::int64_t{sum});
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sized(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1000)->Arg(100000)->Repetitions(9)->ReportAggregatesOnly()->MinTime(0.1);
    // Where other work shares the machine the least time says more than the median.
    benchmark->ComputeStatistics(
        "least", [](const std::vector<double>& times) { return *std::min_element(times.begin(), times.end()); });
}
void SizedByHand(benchmark::internal::Benchmark* benchmark) {
    Sized(benchmark);
    benchmark->UseManualTime();
}

BENCHMARK(Fill<CWithAdd>)->Apply(SizedByHand);
BENCHMARK(Fill<CWithSet>)->Apply(SizedByHand);
BENCHMARK(Fill<CStandard>)->Apply(SizedByHand);
BENCHMARK(LookUp<CWithAdd>)->Apply(Sized);
BENCHMARK(LookUp<CStandard>)->Apply(Sized);
#ifdef BENCH_QT
BENCHMARK(Fill<CQt>)->Apply(SizedByHand);
BENCHMARK(LookUp<CQt>)->Apply(Sized);
#endif
#ifdef BENCH_ABSL
BENCHMARK(Fill<CAbseil>)->Apply(SizedByHand);
BENCHMARK(LookUp<CAbseil>)->Apply(Sized);
#endif

} // namespace
