#include "splinorlib/Splinor.h"

#include "CurveContent.h"
#include "SelectionAccess.h"
#include "splinorlib/Interpolators.h"

#include <cmath>
#include <utility>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
namespace {

Splinor::ChangeType sChangeType = Splinor::cChangeNone;
int sGlobalSwitchDepth = 0;

} // namespace

namespace Private {

bool ByLeftKey::operator()(const Segment* a, const Segment* b) const
{
    const Keyframe* left = a->getLeftKey();
    const Keyframe* right = b->getLeftKey();
    if (!left || !right)
        return !left && right;
    return left->getX() < right->getX();
}

CurveContent::~CurveContent()
{
    releaseSegments();
}

void CurveContent::releaseSegments()
{
    // Iterative, so that a curve of millions of keys does not recurse in its destructor.
    Segment* segment = head;
    head = tail = nullptr;
    keys.clear();
    selectedSegments.clear();
    while (segment) {
        Segment* next = segment->mNext;
        std::shared_ptr<Segment> release = std::move(segment->mKeepAlive);
        segment->detach();
        segment = next;
    }
}

Segment* LastSegmentOf(const CurveContent* iContent)
{
    return iContent ? iContent->tail : nullptr;
}

} // namespace Private

// --- Switch ---------------------------------------------------------------------------------

Splinor::Switch::Switch() : mCurve(nullptr)
{
    ++sGlobalSwitchDepth;
}

Splinor::Switch::Switch(Splinor& iCurve) : mCurve(&iCurve)
{
    ++mCurve->mSwitchDepth;
}

Splinor::Switch::~Switch()
{
    if (mCurve)
        --mCurve->mSwitchDepth;
    else
        --sGlobalSwitchDepth;
}

// --- Life -----------------------------------------------------------------------------------

Splinor::Splinor(Key) : mContent(std::make_unique<Private::CurveContent>())
{
    mContent->owner = this;
    std::shared_ptr<Segment> first = Segment::make(mContent.get(), false);
    first->mInterpolator = Bezier::create();
    mContent->head = mContent->tail = first.get();
}

Splinor::~Splinor() = default;

std::shared_ptr<Splinor> Splinor::create()
{
    auto curve = std::make_shared<Splinor>(Key{});
    curve->setShared(curve);
    return curve;
}

std::shared_ptr<Splinor> Splinor::createCopy(const Splinor& iSource)
{
    std::shared_ptr<Splinor> copy = create();
    Private::CurveContent& to = *copy->mContent;
    const Private::CurveContent& from = *iSource.mContent;
    to.name = from.name;
    to.properties = from.properties;
    to.flags = from.flags;
    to.selected = from.selected;

    to.head->copyValuesFrom(*from.head);
    if (to.head->mSelected)
        to.selectedSegments.insert(to.head);
    Segment* last = to.head;
    for (const Segment* source = from.head->mNext; source; source = source->mNext) {
        Segment* segment = Segment::make(&to, true).get();
        segment->copyValuesFrom(*source);
        segment->mPrevious = last;
        last->mNext = segment;
        last = segment;
        to.keys.append(segment->mLeftKey.getX(), segment);
        if (segment->mSelected)
            to.selectedSegments.insert(to.selectedSegments.end(), segment);
    }
    to.tail = last;
    return copy;
}

void Splinor::swap(Splinor& iOther)
{
    if (&iOther == this)
        return;
    std::swap(mContent, iOther.mContent);
    mContent->owner = this;
    iOther.mContent->owner = &iOther;
    std::shared_ptr<Splinor> keepOther = iOther.getShared();
    announceCurveChanged();
    iOther.announceCurveChanged();
}

// --- Segments -------------------------------------------------------------------------------

std::size_t Splinor::size() const
{
    return mContent->keys.size() + 1;
}

Splinor::iterator Splinor::begin()
{
    return iterator(mContent->head, mContent.get());
}

Splinor::iterator Splinor::end()
{
    return iterator(nullptr, mContent.get());
}

Splinor::const_iterator Splinor::begin() const
{
    return const_iterator(mContent->head, mContent.get());
}

Splinor::const_iterator Splinor::end() const
{
    return const_iterator(nullptr, mContent.get());
}

Splinor::iterator Splinor::findSegment(double iX)
{
    Segment* segment = std::isnan(iX) ? nullptr : mContent->keys.floor(iX);
    return iterator(segment ? segment : mContent->head, mContent.get());
}

Splinor::const_iterator Splinor::findSegment(double iX) const
{
    return const_cast<Splinor*>(this)->findSegment(iX);
}

Splinor::iterator Splinor::insertSegment(const Keyframe& iKey, std::shared_ptr<Interpolator> iInterpolator)
{
    if (!IsFinite(iKey.get()))
        return end();
    const double x = iKey.getX();
    const double separation = Keyframe::getMinSeparation();
    Segment& holder = *findSegment(x);
    Keyframe* left = holder.getLeftKey();
    Keyframe* right = holder.getRightKey();
    const double toLeft = left ? x - left->getX() : separation;
    const double toRight = right ? right->getX() - x : separation;

    if (toLeft >= separation && toRight >= separation)
        return iterator(splitSegment(holder, iKey, std::move(iInterpolator)), mContent.get());

    // Too close to a key to make another: the nearer key takes the new values.
    Keyframe& key = toLeft <= toRight ? *left : *right;
    Segment& segment = *key.getRightSegment();
    key.mPosition.y = iKey.getY();
    key.mFlags = std::uint8_t((key.mFlags & Keyframe::cLocked) | (iKey.mFlags & ~Keyframe::cLocked));
    if (iInterpolator)
        segment.mInterpolator = std::move(iInterpolator);
    announce(&SplinorObserver::valueChanged, key);
    return iterator(&segment, mContent.get());
}

//  Splitting S at K:   | L ---- S ---- R |   ->   | L -- S -- K -- N -- R |
//  N is new and starts at K. S keeps its out tangent at L; the in tangent at R moves to N, so
//  that R keeps its handle, and S gets a fresh, automatic in tangent at K.
Segment* Splinor::splitSegment(Segment& iSegment, const Keyframe& iKey, std::shared_ptr<Interpolator> iInterpolator)
{
    Segment* segment = Segment::make(mContent.get(), true).get();
    segment->mLeftKey.mPosition = iKey.get();
    segment->mLeftKey.mFlags = iKey.mFlags;
    segment->mInterpolator = iInterpolator ? std::move(iInterpolator) : iSegment.mInterpolator;
    if (!segment->mInterpolator)
        segment->mInterpolator = Bezier::create();

    segment->mPrevious = &iSegment;
    segment->mNext = iSegment.mNext;
    if (iSegment.mNext)
        iSegment.mNext->mPrevious = segment;
    else
        mContent->tail = segment;
    iSegment.mNext = segment;

    if (segment->mNext) {
        segment->mIn.copyStateFrom(iSegment.mIn);
        if (Private::SelectionAccess::isSet(iSegment, Private::SelectionAccess::cInBit))
            Private::SelectionAccess::set(*segment, Private::SelectionAccess::cInBit, true);
    }
    Private::SelectionAccess::set(iSegment, Private::SelectionAccess::cInBit, false);
    iSegment.mIn.resetState();

    mContent->keys.insert(iKey.getX(), segment);
    announceCurveChanged();
    return segment;
}

//  Removing S with its key K:   | L -- P -- K -- S -- R |   ->   | L ---- P ---- R |
//  P keeps its own in tangent, which now sits at R.
Splinor::iterator Splinor::removeSegment(iterator iSegment)
{
    Segment* segment = iSegment.get();
    if (!segment || !segment->mHasLeftKey || segment->mContent != mContent.get())
        return iSegment;
    Segment* previous = segment->mPrevious;
    Segment* next = segment->mNext;
    Private::SelectionAccess::clear(*segment);
    if (!next) // the previous segment becomes the last, and its in tangent goes with the key
        Private::SelectionAccess::set(*previous, Private::SelectionAccess::cInBit, false);
    previous->mNext = next;
    if (next)
        next->mPrevious = previous;
    else
        mContent->tail = previous;
    mContent->keys.erase(segment->mLeftKey.getX());

    // Held until the observers have been told, so that they can still look at it.
    std::shared_ptr<Segment> release = std::move(segment->mKeepAlive);
    segment->detach();
    announceCurveChanged();
    return iterator(next, mContent.get());
}

double Splinor::eval(double iX) const
{
    const Segment& segment = *findSegment(iX);
    return segment.getInterpolator()->eval(iX, segment);
}

// --- Name, properties, flags ----------------------------------------------------------------

const char* Splinor::getName() const
{
    return mContent->name.c_str();
}

void Splinor::setName(const char* iName)
{
    std::string name = iName ? iName : "";
    if (name == mContent->name)
        return;
    mContent->name = std::move(name);
    announceProperty("name");
}

const char* Splinor::getProperty(const char* iKey) const
{
    if (!iKey)
        return "";
    auto found = mContent->properties.find(iKey);
    return found == mContent->properties.end() ? "" : found->second.c_str();
}

void Splinor::setProperty(const char* iKey, const char* iValue)
{
    if (!iKey)
        return;
    auto& properties = mContent->properties;
    if (!iValue || !*iValue) {
        if (properties.erase(iKey) == 0)
            return;
    } else {
        std::string& value = properties[iKey];
        if (value == iValue)
            return;
        value = iValue;
    }
    announceProperty(iKey);
}

bool Splinor::getFlag(unsigned iFlag) const
{
    return mContent->flags & iFlag;
}

void Splinor::setFlag(unsigned iFlag, bool iOn)
{
    unsigned flags = iOn ? mContent->flags | iFlag : mContent->flags & ~iFlag;
    if (flags == mContent->flags)
        return;
    mContent->flags = flags;
    announceCurveChanged();
}

// --- Notification ---------------------------------------------------------------------------

bool Splinor::isAnnouncing() const
{
    return sGlobalSwitchDepth == 0 && mSwitchDepth == 0;
}

void Splinor::announceCurveChanged()
{
    if (isAnnouncing())
        notifyChanged();
}

void Splinor::announceProperty(const char* iKey)
{
    if (!isAnnouncing())
        return;
    std::shared_ptr<Splinor> keepAlive = getShared();
    mObservers.notify(&SplinorObserver::propertyChanged, *this, iKey);
    globalObservers().notify(&SplinorObserver::propertyChanged, *this, iKey);
    notifyChanged();
}

void Splinor::notifyChanged()
{
    std::shared_ptr<Splinor> keepAlive = getShared();
    mObservers.notify(&SplinorObserver::curveChanged, *this);
    globalObservers().notify(&SplinorObserver::curveChanged, *this);
}

void Splinor::setChangeType(ChangeType iType)
{
    sChangeType = iType;
}

Splinor::ChangeType Splinor::getChangeType()
{
    return sChangeType;
}

void Splinor::subscribe(SplinorObserver& iObserver)
{
    mObservers.subscribe(iObserver);
}

void Splinor::unsubscribe(SplinorObserver& iObserver)
{
    mObservers.unsubscribe(iObserver);
}

void Splinor::subscribeGlobal(SplinorObserver& iObserver)
{
    globalObservers().subscribe(iObserver);
}

void Splinor::unsubscribeGlobal(SplinorObserver& iObserver)
{
    globalObservers().unsubscribe(iObserver);
}

Splinor::ObserverSet& Splinor::globalObservers()
{
    // Never destroyed, so that curves and observers that outlive main() can still reach it.
    static ObserverSet* observers = new ObserverSet;
    return *observers;
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
