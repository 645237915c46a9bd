#include "ui/browser_site.h"

// After windows.h, whose types they use.
#include <mshtmdid.h>
#include <mshtmhst.h>

namespace quellix {

HRESULT BrowserSite::QueryInterface(REFIID id, void** object) {
  if (id == __uuidof(IUnknown) || id == __uuidof(IOleClientSite)) {
    *object = static_cast<IOleClientSite*>(this);
  } else if (id == __uuidof(IOleWindow) || id == __uuidof(IOleInPlaceSite)) {
    *object = static_cast<IOleInPlaceSite*>(this);
  } else if (id == __uuidof(IOleInPlaceUIWindow) || id == __uuidof(IOleInPlaceFrame)) {
    *object = static_cast<IOleInPlaceFrame*>(this);
  } else if (id == __uuidof(IDispatch)) {
    *object = static_cast<IDispatch*>(this);
  } else {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  return S_OK;
}

HRESULT BrowserSite::GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** window,
                                      RECT* place, RECT* clip, OLEINPLACEFRAMEINFO* info) {
  *frame = this;
  *window = nullptr;
  GetClientRect(frame_, place);
  *clip = *place;
  info->fMDIApp = FALSE;
  info->hwndFrame = GetAncestor(frame_, GA_ROOT);
  info->haccel = nullptr;
  info->cAccelEntries = 0;
  return S_OK;
}

HRESULT BrowserSite::Invoke(DISPID property, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* value,
                            EXCEPINFO*, UINT*) {
  if (property != DISPID_AMBIENT_DLCONTROL || !value) return DISP_E_MEMBERNOTFOUND;
  value->vt = VT_I4;
  value->lVal = static_cast<LONG>(DLCTL_DLIMAGES | DLCTL_FORCEOFFLINE | DLCTL_SILENT |
                                  DLCTL_NO_SCRIPTS | DLCTL_NO_JAVA | DLCTL_NO_DLACTIVEXCTLS |
                                  DLCTL_NO_RUNACTIVEXCTLS | DLCTL_NO_CLIENTPULL);
  return S_OK;
}

}  // namespace quellix
