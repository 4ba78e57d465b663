#include <corvane/interfaces/ISurfaceCompositing.h>

namespace Corvane
{

using Point = ISurfaceCompositing::Point;
using Dimensions = ISurfaceCompositing::Dimensions;
using Rect = ISurfaceCompositing::Rect;

namespace
{

int addWrapping(int a, int b)
{
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}

} // namespace

Point::Point(int x, int y) : x(x), y(y) {}

Point::Point(Deserializer& deserializer)
    : x(deserialize<int>("x", deserializer)), y(deserialize<int>("y", deserializer))
{
}

int Point::getX() const
{
    return x;
}

int Point::getY() const
{
    return y;
}

Point Point::operator+(const Point& other) const
{
    return Point(addWrapping(x, other.x), addWrapping(y, other.y));
}

std::string Point::getObjectType() const
{
    return "Point";
}

std::unique_ptr<SerialObject> Point::clone() const
{
    return std::make_unique<Point>(*this);
}

void Point::serialize(Serializer& serializer) const
{
    serializer.writeInteger("x", x);
    serializer.writeInteger("y", y);
}

Point::~Point() = default;

Dimensions::Dimensions(unsigned int width, unsigned int height) : width(width), height(height) {}

Dimensions::Dimensions(Deserializer& deserializer)
    : width(deserialize<unsigned int>("width", deserializer)), height(deserialize<unsigned int>("height", deserializer))
{
}

unsigned int Dimensions::getWidth() const
{
    return width;
}

unsigned int Dimensions::getHeight() const
{
    return height;
}

std::string Dimensions::getObjectType() const
{
    return "Dimensions";
}

std::unique_ptr<SerialObject> Dimensions::clone() const
{
    return std::make_unique<Dimensions>(*this);
}

void Dimensions::serialize(Serializer& serializer) const
{
    serializer.writeUnsigned("width", width);
    serializer.writeUnsigned("height", height);
}

Dimensions::~Dimensions() = default;

Rect::Rect(int x, int y, unsigned int width, unsigned int height) : Point(x, y), Dimensions(width, height) {}

Rect::Rect(const Point& point, const Dimensions& dimensions) : Point(point), Dimensions(dimensions) {}

Rect::Rect(Deserializer& deserializer) : Point(deserializer), Dimensions(deserializer) {}

Point Rect::getPoint() const
{
    return *this;
}

Dimensions Rect::getDimensions() const
{
    return *this;
}

std::string Rect::getObjectType() const
{
    return "Rect";
}

std::unique_ptr<SerialObject> Rect::clone() const
{
    return std::make_unique<Rect>(*this);
}

void Rect::serialize(Serializer& serializer) const
{
    Point::serialize(serializer);
    Dimensions::serialize(serializer);
}

Rect::~Rect() = default;

} // namespace Corvane
