#pragma once

#include "splinorlib/Keyframe.h"
#include "splinorlib/Segment.h"
#include "splinorlib/SharedFromThis.h"
#include "splinorlib/SplinorObserver.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/Tangent.h"

#include <cstddef>
#include <iterator>
#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

class Interpolator;

namespace Private {
struct CurveContent;
struct SelectionAccess;
Segment* LastSegmentOf(const CurveContent* iContent);
}

/// An animation curve: its segments in x order, from the open segment before the first key to
/// the open segment after the last.
///
/// A curve's identity (its address, its observers) is separate from its content (segments,
/// keys, name, properties, flags): swap() exchanges the contents of two curves in constant
/// time, so a command can keep the state that is not on view in a second curve.
///
/// Iterators and pointers to segments, keys and tangents stay valid through insertions and
/// removals of other segments, and through swap() (they then belong to the other curve).
class Splinor : public SharedFromThis<Splinor>
{
    struct Key
    {
    };

public:
    /// What is under way, as a process-wide state that observers may read.
    enum ChangeType : int {
        cChangeNone = 0,     ///< at rest
        cChangeAhead = 1,    ///< about to change; the curve still has its old state
        cChangeUnderWay = 2, ///< being changed
        cChangeDone = 3,     ///< changed; the curve has its new state
    };

    /// While a Switch lives, edits of its curve (or of every curve, for the default
    /// constructor) are not announced; the code that made it announces the change afterwards.
    class Switch
    {
    public:
        Switch();
        explicit Switch(Splinor& iCurve);
        ~Switch();
        Switch(const Switch&) = delete;
        Switch& operator=(const Switch&) = delete;

    private:
        Splinor* mCurve;
    };

    template <class SegmentT>
    class Iterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Segment;
        using difference_type = std::ptrdiff_t;
        using pointer = SegmentT*;
        using reference = SegmentT&;

        Iterator() = default;
        Iterator(SegmentT* iSegment, const Private::CurveContent* iContent) : mSegment(iSegment), mContent(iContent) {}
        template <class Other, class = std::enable_if_t<std::is_convertible<Other*, SegmentT*>::value>>
        Iterator(const Iterator<Other>& iOther) : mSegment(iOther.get()), mContent(iOther.content())
        {
        }

        reference operator*() const { return *mSegment; }
        pointer operator->() const { return mSegment; }
        pointer get() const { return mSegment; }
        const Private::CurveContent* content() const { return mContent; }

        Iterator& operator++()
        {
            mSegment = mSegment->getNext();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator old = *this;
            ++*this;
            return old;
        }
        /// Decrementing end() gives the last segment.
        Iterator& operator--()
        {
            mSegment = mSegment ? mSegment->getPrevious() : Private::LastSegmentOf(mContent);
            return *this;
        }
        Iterator operator--(int)
        {
            Iterator old = *this;
            --*this;
            return old;
        }

        template <class Other>
        bool operator==(const Iterator<Other>& o) const { return mSegment == o.get(); }
        template <class Other>
        bool operator!=(const Iterator<Other>& o) const { return mSegment != o.get(); }

    private:
        SegmentT* mSegment = nullptr;
        const Private::CurveContent* mContent = nullptr;
    };

    using iterator = Iterator<Segment>;
    using const_iterator = Iterator<const Segment>;

    /// A curve with no keys: exactly one open segment.
    static std::shared_ptr<Splinor> create();
    /// A new, independent curve with the same content as iSource. Interpolators are shared.
    static std::shared_ptr<Splinor> createCopy(const Splinor& iSource);

    explicit Splinor(Key);
    ~Splinor();
    Splinor(const Splinor&) = delete;
    Splinor& operator=(const Splinor&) = delete;

    /// Exchanges the whole content of two curves; each keeps its identity and observers.
    void swap(Splinor& iOther);

    /// The number of segments: one more than the number of keys.
    std::size_t size() const;
    std::size_t getKeyCount() const { return size() - 1; }

    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    /// The segment whose span holds x; for the x of a key, the segment that starts there.
    /// NaN gives the first segment.
    iterator findSegment(double iX);
    const_iterator findSegment(double iX) const;

    /// Splits the segment holding the key's x and returns the new segment, whose left key is
    /// the curve's own copy of iKey and whose predecessor is the part on the left. A key
    /// closer than getMinSeparation() to an existing key replaces that key's value and flags
    /// instead, and its segment is returned. A null interpolator takes the split segment's.
    /// A non-finite key is refused: end() is returned.
    iterator insertSegment(const Keyframe& iKey, std::shared_ptr<Interpolator> iInterpolator);

    /// Takes out a segment and its left key; the segment before spans the gap, keeping its own
    /// in tangent. The first segment, which has no key, and end() are left alone. Returns the
    /// segment that followed the removed one.
    iterator removeSegment(iterator iSegment);

    /// The curve's value at x; 0 for a curve without keys.
    double eval(double iX) const;

    const char* getName() const;
    void setName(const char* iName);
    /// "" for a key that is not set.
    const char* getProperty(const char* iKey) const;
    /// An empty value removes the property.
    void setProperty(const char* iKey, const char* iValue);

    /// Tells the curve's observers, and the global ones, that it has changed.
    void notifyChanged();

    static void setChangeType(ChangeType iType);
    static ChangeType getChangeType();

    void subscribe(SplinorObserver& iObserver);
    void unsubscribe(SplinorObserver& iObserver);
    /// Observers of every curve.
    static void subscribeGlobal(SplinorObserver& iObserver);
    static void unsubscribeGlobal(SplinorObserver& iObserver);

private:
    friend class Keyframe;
    friend class Segment;
    friend class Tangent;
    friend struct Private::CurveContent;
    friend struct Private::SelectionAccess;
    friend bool IsVisible(const Splinor&);
    friend void SetVisible(Splinor&, bool);
    friend bool IsEditable(const Splinor&);
    friend void SetEditable(Splinor&, bool);
    friend bool IsLocked(const Splinor&);
    friend void SetLocked(Splinor&, bool);
    friend bool IsVelocityVisible(const Splinor&);
    friend void SetVelocityVisible(Splinor&, bool);
    friend bool IsAccelerationVisible(const Splinor&);
    friend void SetAccelerationVisible(Splinor&, bool);
    friend int GetSegmentIndex(const Splinor&, const Segment&);
    friend iterator GetIndexedSegmentIterator(Splinor&, int);

    using ObserverSet = Private::SubjectBase<SplinorObserver>::ObserverSet;

    bool isAnnouncing() const;
    template <class Item>
    void announce(void (SplinorObserver::*iCallback)(Item&), Item& iItem);
    void announceCurveChanged();
    void announceProperty(const char* iKey);
    bool getFlag(unsigned iFlag) const;
    void setFlag(unsigned iFlag, bool iOn);
    Segment* splitSegment(Segment& iSegment, const Keyframe& iKey, std::shared_ptr<Interpolator> iInterpolator);

    static ObserverSet& globalObservers();

    std::unique_ptr<Private::CurveContent> mContent;
    ObserverSet mObservers;
    int mSwitchDepth = 0;
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
