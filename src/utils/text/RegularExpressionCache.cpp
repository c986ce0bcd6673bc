// Compiled expressions, the least used dropped first.

#include <veltor/utils/RegularExpressionCache.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <list>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <utility>

namespace veltor::utils {
namespace {

constexpr unsigned defaultLimit = 1024;
constexpr std::size_t slotCount = 8;
constexpr std::size_t cacheLine = 64;

/// The slot of a thread from its first look-up to its end: the one that the fewest have. Two that begin at
/// the same time may get the same.
class SlotOfThread
{
public:
    SlotOfThread()
        : m_threads(*std::min_element(s_threads.begin(), s_threads.end()))
    {
        ++m_threads;
    }
    ~SlotOfThread() { --m_threads; }
    SlotOfThread(const SlotOfThread&) = delete;
    SlotOfThread& operator=(const SlotOfThread&) = delete;

    [[nodiscard]] std::size_t number() const
    {
        return static_cast<std::size_t>(&m_threads - s_threads.data());
    }

private:
    // Without a destructor: threads may end later than the process.
    static inline std::array<std::atomic<int>, slotCount> s_threads = {};
    std::atomic<int>& m_threads;
};

/// What threads that only look up would otherwise fight for exists once a slot: with one counter for all,
/// two of them spend most of their time on passing it to and fro.
std::size_t slotOfThisThread()
{
    thread_local const SlotOfThread slot;
    return slot.number();
}

/// A read-write lock whose readers do not meet: each thread takes the mutex of its slot, a writer takes
/// all of them, in order.
class SlottedLock
{
public:
    /// The mutex that the calling thread locks shared to read.
    std::shared_mutex& ofThisThread() { return m_slots[slotOfThisThread()].mutex; }

    void lock()
    {
        for (Slot& slot : m_slots) {
            slot.mutex.lock();
        }
    }

    void unlock()
    {
        for (Slot& slot : m_slots) {
            slot.mutex.unlock();
        }
    }

private:
    struct Slot
    {
        std::shared_mutex mutex;
        char padding[cacheLine]; // keeps the next mutex off this one's cache line
    };
    std::array<Slot, slotCount> m_slots = {};
};

/// An expression with a handle a slot, each with a counter of its own, on a cache line of its own.
class Entry
{
public:
    Entry(const QString& pattern, QRegularExpression::PatternOptions options)
        : m_pattern(pattern)
        , m_options(options)
    {
        const auto expression = std::make_shared<QRegularExpression>(pattern, options);
        expression->optimize();
        for (auto& handle : m_handles) {
            const auto share = std::make_shared<Share>(Share{expression});
            handle = {share, expression.get()};
        }
    }

    [[nodiscard]] const QString& pattern() const { return m_pattern; }
    [[nodiscard]] QRegularExpression::PatternOptions options() const { return m_options; }
    /// For the calling thread.
    [[nodiscard]] const std::shared_ptr<QRegularExpression>& handle() const
    {
        return m_handles[slotOfThisThread()];
    }

private:
    struct alignas(cacheLine) Share
    {
        std::shared_ptr<QRegularExpression> expression;
    };

    QString m_pattern;
    QRegularExpression::PatternOptions m_options;
    std::array<std::shared_ptr<QRegularExpression>, slotCount> m_handles;
};

/// What an entry is found by, without a copy of the pattern, whose counter threads would fight for too.
struct Key
{
    QRegularExpression::PatternOptions options;
    QStringView pattern;

    bool operator==(const Key& other) const { return options == other.options && pattern == other.pattern; }
};

struct KeyHash
{
    std::size_t operator()(const Key& key) const
    {
        return qHash(key.pattern, static_cast<uint>(key.options));
    }
};

} // namespace

bool RegularExpressionCache::ExpressionFlags::operator==(const ExpressionFlags& other) const noexcept
{
    return options == other.options && pattern == other.pattern;
}

bool RegularExpressionCache::ExpressionFlags::operator<(const ExpressionFlags& other) const noexcept
{
    if (options != other.options) {
        return static_cast<quint32>(options) < static_cast<quint32>(other.options);
    }
    return QString::compare(pattern, other.pattern, Qt::CaseSensitive) < 0;
}

struct RegularExpressionCache::Store
{
    using Position = std::list<Entry>::iterator;

    std::shared_ptr<QRegularExpression> find(const Key& key);
    void markExpressionAsUsed(Position position);
    void removeUnusedExpression();
    void updateFront();

    // Taken in this order. Those who only look up share `lock`, and change the order of the entries and
    // nothing else under `listMutex`; the others hold `lock` alone.
    SlottedLock lock;
    std::mutex listMutex;

    std::list<Entry> entries;                         // most recently used first
    std::unordered_map<Key, Position, KeyHash> index; // its keys view the entries' patterns
    unsigned limit = defaultLimit;
    // The first entry, written together with the order: hits on it leave listMutex alone.
    std::atomic<const Entry*> front = {nullptr};
};

/// The expression, marked as used, or null. The caller shares the lock or holds it alone.
std::shared_ptr<QRegularExpression> RegularExpressionCache::Store::find(const Key& key)
{
    // The expression asked for last time, with most callers: found without a look-up.
    const Entry* const first = front.load(std::memory_order_relaxed);
    if (first != nullptr && key == Key{first->options(), first->pattern()}) {
        return first->handle();
    }
    const auto found = index.find(key);
    if (found == index.end()) {
        return nullptr;
    }
    markExpressionAsUsed(found->second);
    return found->second->handle();
}

void RegularExpressionCache::Store::markExpressionAsUsed(Position position)
{
    const std::lock_guard guard(listMutex);
    entries.splice(entries.begin(), entries, position);
    updateFront();
}

/// The caller holds the lock alone.
void RegularExpressionCache::Store::removeUnusedExpression()
{
    index.erase(Key{entries.back().options(), entries.back().pattern()});
    entries.pop_back();
    updateFront();
}

/// The caller holds the lock alone, or shares it and holds listMutex.
void RegularExpressionCache::Store::updateFront()
{
    front.store(entries.empty() ? nullptr : &entries.front(), std::memory_order_relaxed);
}

RegularExpressionCache::RegularExpressionCache(unsigned limit)
    : m_store(std::make_unique<Store>())
{
    setLimit(limit);
}

RegularExpressionCache::~RegularExpressionCache() = default;

void RegularExpressionCache::setLimit(unsigned limit)
{
    const std::lock_guard guard(m_store->lock);
    m_store->limit = limit == 0 ? defaultLimit : limit;
    while (m_store->index.size() > m_store->limit) {
        m_store->removeUnusedExpression();
    }
}

std::shared_ptr<QRegularExpression> RegularExpressionCache::retrieve(const ExpressionFlags& key)
{
    return retrieve(key.pattern, key.options);
}

std::shared_ptr<QRegularExpression>
RegularExpressionCache::retrieve(const QString& pattern, QRegularExpression::PatternOptions options)
{
    Store& store = *m_store;
    {
        const std::shared_lock guard(store.lock.ofThisThread());
        if (auto expression = store.find({options, pattern})) {
            return expression;
        }
    }
    // Compiled under the lock: two threads that miss the same pattern must not both compile it.
    const std::lock_guard guard(store.lock);
    if (auto expression = store.find({options, pattern})) {
        return expression;
    }
    const Entry& entry = store.entries.emplace_front(pattern, options);
    store.index.emplace(Key{options, entry.pattern()}, store.entries.begin());
    store.updateFront();
    auto expression = entry.handle();
    if (store.index.size() > store.limit) {
        store.removeUnusedExpression();
    }
    return expression;
}

void RegularExpressionCache::remove(const ExpressionFlags& key)
{
    remove(key.pattern, key.options);
}

void RegularExpressionCache::remove(const QString& pattern, QRegularExpression::PatternOptions options)
{
    const std::lock_guard guard(m_store->lock);
    const auto found = m_store->index.find({options, pattern});
    if (found != m_store->index.end()) {
        const auto position = found->second;
        m_store->index.erase(found); // before the pattern that its key views
        m_store->entries.erase(position);
        m_store->updateFront();
    }
}

} // namespace veltor::utils
