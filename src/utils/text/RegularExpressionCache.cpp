// Compiled expressions, the least used dropped first.

#include <veltor/utils/RegularExpressionCache.h>

#include <array>
#include <atomic>
#include <list>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace veltor::utils {
namespace {

constexpr unsigned defaultLimit = 1024;

/// A read-write lock whose readers do not meet: each thread takes the mutex of its slot, a writer takes
/// all of them, in order. With one mutex for all, two threads that only look up spend most of their time
/// on passing its counter to and fro.
class SlottedLock
{
public:
    /// The mutex that the calling thread locks shared to read.
    std::shared_mutex& ofThisThread()
    {
        static std::atomic<std::size_t> threads = {0};
        thread_local const std::size_t slot = threads.fetch_add(1, std::memory_order_relaxed) % slotCount;
        return m_slots[slot].mutex;
    }

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
    static constexpr std::size_t slotCount = 8;

    struct Slot
    {
        std::shared_mutex mutex;
        char padding[64]; // keeps the next mutex off this one's cache line
    };
    std::array<Slot, slotCount> m_slots = {};
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
    using Entry = std::pair<const ExpressionFlags, std::shared_ptr<QRegularExpression>>;
    using Position = std::list<Entry>::iterator;

    std::shared_ptr<QRegularExpression> find(const QString& pattern,
                                             QRegularExpression::PatternOptions options);
    void markExpressionAsUsed(Position position);
    void removeUnusedExpression();
    void updateFront();

    // Taken in this order. Those who only look up share `lock`, and change the order of the entries and
    // nothing else under `listMutex`; the others hold `lock` alone.
    SlottedLock lock;
    std::mutex listMutex;

    std::list<Entry> entries; // most recently used first
    std::map<ExpressionFlags, Position> index;
    unsigned limit = defaultLimit;
    // The first entry, written together with the order: hits on it leave listMutex alone.
    std::atomic<const Entry*> front = {nullptr};
};

/// The expression, marked as used, or null. The caller shares the lock or holds it alone.
std::shared_ptr<QRegularExpression>
RegularExpressionCache::Store::find(const QString& pattern, QRegularExpression::PatternOptions options)
{
    // The expression asked for last time, with most callers: found without a look-up, and without a
    // copy of the pattern, whose counter of references several threads would fight for.
    const Entry* const first = front.load(std::memory_order_relaxed);
    if (first != nullptr && first->first.options == options && first->first.pattern == pattern) {
        return first->second;
    }
    const auto found = index.find(ExpressionFlags{options, pattern});
    if (found == index.end()) {
        return nullptr;
    }
    markExpressionAsUsed(found->second);
    return found->second->second;
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
    index.erase(entries.back().first);
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
        if (auto expression = store.find(pattern, options)) {
            return expression;
        }
    }
    // Compiled under the lock: two threads that miss the same pattern must not both compile it.
    const std::lock_guard guard(store.lock);
    if (auto expression = store.find(pattern, options)) {
        return expression;
    }
    const ExpressionFlags key = {options, pattern};
    auto expression = std::make_shared<QRegularExpression>(pattern, options);
    expression->optimize();
    store.entries.emplace_front(key, expression);
    store.index.emplace(key, store.entries.begin());
    store.updateFront();
    if (store.index.size() > store.limit) {
        store.removeUnusedExpression();
    }
    return expression;
}

void RegularExpressionCache::remove(const ExpressionFlags& key)
{
    const std::lock_guard guard(m_store->lock);
    const auto found = m_store->index.find(key);
    if (found != m_store->index.end()) {
        m_store->entries.erase(found->second);
        m_store->index.erase(found);
        m_store->updateFront();
    }
}

void RegularExpressionCache::remove(const QString& pattern, QRegularExpression::PatternOptions options)
{
    remove(ExpressionFlags{options, pattern});
}

} // namespace veltor::utils
