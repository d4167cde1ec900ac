#include "SearchResult.h"

#include <QRandomGenerator>

QUuid SearchResult::newId()
{
    // Each thread draws from its own generator, seeded once from the system's entropy.
    thread_local QRandomGenerator64 generator(QRandomGenerator::system()->generate());
    const quint64 high = generator.generate();
    const quint64 low = generator.generate();
    QUuid id;
    id.data1 = uint(high >> 32);
    id.data2 = ushort(high >> 16);
    id.data3 = ushort((high & 0x0FFF) | 0x4000); // version 4
    for (int i = 0; i < 8; ++i)
        id.data4[i] = uchar(low >> (56 - 8 * i));
    id.data4[0] = uchar((id.data4[0] & 0x3F) | 0x80); // RFC 4122 variant
    return id;
}
