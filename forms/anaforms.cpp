#include "anaforms.h"

#include "anaformchngrprx.h"
#include "anaformchngrpseq.h"
#include "anaformchngrpstaevn.h"
#include "anaformchngrpvec.h"
#include "anaformcoordinatexy.h"
#include "anaformfilecut.h"
#include "anaformhmchart.h"
#include "anaformtoolexpression.h"
#include "cmtdchildcontainer.h"

namespace {

CAnaFormPanel *makeAnaForm(int number, CCmtdChildFrame *frame, CCmtdChildContainerAna *page)
{
    switch (number) {
    case 1:
        return new CAnaFormFileCut(number, frame, page);
    case 3:
        return new CAnaFormToolExpression(number, frame, page);
    case 4:
        return new CAnaFormChnSngHmChart(number, frame, page);
    case 7:
        return new CAnaFormChnGrpVec(number, frame, page);
    case 8:
        return new CAnaFormChnGrpSeq(number, frame, page);
    case 9:
        return new CAnaFormChnGrpHmChart(number, frame, page);
    case 10:
        return new CAnaFormChnGrpRx(number, frame, page);
    case 12:
        return new CAnaFormChnGrpStaEvn(number, frame, page);
    case 13:
        return new CAnaFormCoordinateXY(number, frame, page);
    default:
        return nullptr;
    }
}

} // namespace

void InstallAnaForms()
{
    CCmtdChildContainerAna::setFormFactory(makeAnaForm);
}
